#pragma once
// DSPLibIF over FFTW 3 (single and double precision) and LAPACKE/CBLAS over OpenBLAS. Plans are
// made on first use of a length and kept for the object's life, so a length used before costs
// neither planning nor allocation. They run on the caller's buffers: a buffer aligned as FFTW's
// vector code wants (what any allocator gives) takes the fast plan, any other one a plan made
// for any alignment. One instance serves one thread; planning itself is serialised across
// instances, as FFTW's planner is shared by the whole process.

#include <array>
#include <vector>

#include "dsp/DSPLibIF.h"

namespace halvo {

class DSPLibFftw final : public DSPLibIF {
  public:
    DSPLibFftw() = default;
    ~DSPLibFftw() override;
    DSPLibFftw(const DSPLibFftw&) = delete;
    DSPLibFftw& operator=(const DSPLibFftw&) = delete;

    void FftForwardReal64(const double* src, double* dst, int n) override;
    void FftForwardReal32(const float* src, float* dst, int n) override;
    void FftBackwardReal64(const double* src, double* dst, int n) override;
    void FftBackwardReal32(const float* src, float* dst, int n) override;
    void FftForwardComplex64(const Complex64* src, Complex64* dst, int n) override;
    void FftForwardComplex32(const Complex32* src, Complex32* dst, int n) override;
    void FftBackwardComplex64(const Complex64* src, Complex64* dst, int n) override;
    void FftBackwardComplex32(const Complex32* src, Complex32* dst, int n) override;
    void ComplexMultiply64(const Complex64* a, const Complex64* b, Complex64* out, int n) override;
    void ComplexMultiply32(const Complex32* a, const Complex32* b, Complex32* out, int n) override;
    void ComplexConjugateMultiply32(const Complex32* a, const Complex32* b, Complex32* out,
                                    int n) override;
    void ShortToFloat(const std::int16_t* src, float* dst, int n) override;
    void FloatToShort(const float* src, std::int16_t* dst, int n, float scale) override;
    float MaxAbsFloat(const float* v, int n) override;
    int MaxAbsShort(const std::int16_t* v, int n) override;
    void ComplexMagnitude(const Complex32* src, float* dst, int n) override;
    void DecimateShort(const std::int16_t* src, std::int16_t* dst, int n, int step) override;
    void HermitianEigen(const Complex32* A, int n, int k, Complex32* V, float* w,
                        bool packed) override;
    void HermitianProduct(const Complex32* A, int n, int m, Complex32* C, bool packed) override;
    void ComplexSvd(int m, int n, const Complex32* A, Complex32* U, float* S) override;

    // The power of two a transform of n values runs over, and its log2 (0 for n of 1 or less).
    static int Log2Length(int n);

  private:
    // One table per precision, domain and direction, indexed by k.
    enum Table { C32F, C32B, R32F, R32B, C64F, C64B, R64F, R64B, kTables };
    void* Plan(Table table, int k, bool aligned);

    // [unaligned, aligned][table][k]
    std::array<std::array<std::array<void*, kMaxLog2 + 1>, kTables>, 2> plans_{};
    std::vector<Complex32> product_;  // the packed product's rows, grown, never shrunk
    // The eigen solver's matrix copy, results and work arrays, sized for n (0: not yet).
    struct EigenWork {
        int n = 0;
        std::vector<Complex32> matrix, vectors, work;
        std::vector<float> values, rwork;
        std::vector<int> iwork, support;
    };
    EigenWork eigen_;
};

}  // namespace halvo
