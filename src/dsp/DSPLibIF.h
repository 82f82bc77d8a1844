#pragma once
// The one interface through which the program does vector arithmetic worth a tuned library:
// Fourier transforms, complex products, short/float conversion, peak search, decimation and
// three small complex solvers. Callers hold their own instance (one thread each) and never see
// a plan, a workspace or a capability of the machine.
//
// Transforms share one shape: the length is the smallest power of two 2^k >= n (k = 0 for n of
// 1 or less); when src and dst differ, n values are copied into dst first (n + 2 reals for a
// backward real transform, whose input is the packed half spectrum), and the transform then runs
// in place in dst over the whole power of two. A caller whose n is no power of two zero-fills dst
// up to it; an n below 0 copies as if it were 0. dst holds the whole power of two: 2^k complex
// values, or 2^k + 2 reals for a real transform either way. Real spectra are packed: n/2 + 1
// complex values, that is n + 2 reals, bins 0 and n/2 with their imaginary parts (0). Forward is
// unscaled and backward scales by 1/length, so forward then backward gives the input back. For
// k of 22 and above nothing is transformed: dst keeps the plain copy. No operation reports a
// failure; bad sizes do nothing.

#include <complex>
#include <cstdint>
#include <memory>

namespace halvo {

class DSPLibIF {
  public:
    using Complex32 = std::complex<float>;
    using Complex64 = std::complex<double>;
    static constexpr int kMaxLog2 = 21;

    virtual ~DSPLibIF() = default;

    virtual void FftForwardReal64(const double* src, double* dst, int n) = 0;
    virtual void FftForwardReal32(const float* src, float* dst, int n) = 0;
    virtual void FftBackwardReal64(const double* src, double* dst, int n) = 0;
    virtual void FftBackwardReal32(const float* src, float* dst, int n) = 0;
    virtual void FftForwardComplex64(const Complex64* src, Complex64* dst, int n) = 0;
    virtual void FftForwardComplex32(const Complex32* src, Complex32* dst, int n) = 0;
    virtual void FftBackwardComplex64(const Complex64* src, Complex64* dst, int n) = 0;
    virtual void FftBackwardComplex32(const Complex32* src, Complex32* dst, int n) = 0;
    // out[i] = a[i] * b[i]; out may be a or b.
    virtual void ComplexMultiply64(const Complex64* a, const Complex64* b, Complex64* out,
                                   int n) = 0;
    virtual void ComplexMultiply32(const Complex32* a, const Complex32* b, Complex32* out,
                                   int n) = 0;
    virtual void ShortToFloat(const std::int16_t* src, float* dst, int n) = 0;
    // dst[i] = low 16 bits of trunc(src[i] * scale): beyond the short range it wraps, it does not
    // saturate. A product that is not a number or lies outside 32 bits gives 0.
    virtual void FloatToShort(const float* src, std::int16_t* dst, int n, float scale) = 0;
    // The largest absolute value; 0 for n below 1.
    virtual float MaxAbsFloat(const float* v, int n) = 0;
    // The largest absolute value, as an int: -32768 gives 32768. 0 for an empty array.
    virtual int MaxAbsShort(const std::int16_t* v, int n) = 0;
    // dst[i] = |src[i]|; dst may overlay src.
    virtual void ComplexMagnitude(const Complex32* src, float* dst, int n) = 0;
    // dst[j] = src[j * step] for j below n / step; nothing for a step below 1.
    virtual void DecimateShort(const std::int16_t* src, std::int16_t* dst, int n, int step) = 0;
    // The k largest eigenpairs of the Hermitian matrix whose upper triangle A holds (column by
    // column, n by n, or packed as n(n+1)/2 values): k eigenvectors of n values into V and k
    // eigenvalues into w, ascending, the largest last. A is not changed. n outside 1 to 100, or
    // k outside 1 to n, leaves V and w as they were.
    virtual void HermitianEigen(const Complex32* A, int n, int k, Complex32* V, float* w,
                                bool packed) {
        static_cast<void>(A), static_cast<void>(n), static_cast<void>(k);
        static_cast<void>(V), static_cast<void>(w), static_cast<void>(packed);
    }
    // C = A times its conjugate transpose for the n by m matrix A (column by column), upper
    // triangle into a full n by n C; m of 0 writes zeros. Packed (n(n+1)/2 values, the upper
    // triangle column by column) the product keeps its own row-by-row rule: row j of an n by n
    // scratch is A times the m values from element j * m, for j below m, with rows from m on 0.
    // Nothing is conjugated there, so for square A it is A times A, which is A times its
    // conjugate transpose when A is Hermitian. m above n, n below 1 or m below 0 does nothing.
    virtual void HermitianProduct(const Complex32* A, int n, int m, Complex32* C, bool packed) {
        static_cast<void>(A), static_cast<void>(n), static_cast<void>(m);
        static_cast<void>(C), static_cast<void>(packed);
    }
    // The left singular vectors (m by m into U, the first min(m, n) columns filled, the rest 0)
    // and the singular values (n into S, descending, 0 past min(m, n)) of the m by n matrix A,
    // column by column, for m * n of 1 to 125; anything else, or a solver that does not
    // converge, leaves U and S alone.
    virtual void ComplexSvd(int m, int n, const Complex32* A, Complex32* U, float* S) {
        static_cast<void>(m), static_cast<void>(n), static_cast<void>(A);
        static_cast<void>(U), static_cast<void>(S);
    }

    // Beside the plain multiply: out[i] = a[i] * conj(b[i]), the step of a cross-correlation.
    virtual void ComplexConjugateMultiply32(const Complex32* a, const Complex32* b, Complex32* out,
                                            int n) = 0;
};

// Every kind gives the library's one implementation; callers pass 0.
std::unique_ptr<DSPLibIF> CreateDSPLib(int kind = 0);

}  // namespace halvo
