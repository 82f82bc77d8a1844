// The numeric library against values worked out independently: a plain DFT summed in double
// for the transforms, small matrices solved by hand for the solvers, and each edge case.

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "dsp/DSPLibFftw.h"

namespace halvo {
namespace {

using C32 = std::complex<float>;
using C64 = std::complex<double>;

// The transform as defined: X[f] = sum x[t] e^(sign 2 pi i f t / n).
std::vector<C64> Dft(const std::vector<C64>& x, int sign) {
    const std::size_t n = x.size();
    std::vector<C64> out(n);
    for (std::size_t f = 0; f < n; ++f) {
        C64 sum = 0;
        for (std::size_t t = 0; t < n; ++t)
            sum += x[t] * std::polar(1.0, sign * 2 * std::numbers::pi * double(f * t % n) / n);
        out[f] = sum;
    }
    return out;
}

std::vector<double> Noise(std::size_t n, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> d(-1.0, 1.0);
    std::vector<double> v(n);
    for (double& x : v) x = d(gen);
    return v;
}

class DSPLibTest : public ::testing::Test {
  protected:
    std::unique_ptr<DSPLibIF> lib_ = CreateDSPLib(0);
};

TEST_F(DSPLibTest, TransformsMatchAPlainDftInBothPrecisions) {
    // n, and the power of two it runs over; a length that is no power of two is zero-filled by
    // the caller past n.
    for (const int n : {1, 2, 8, 64, 600, 1024}) {
        const int len = 1 << DSPLibFftw::Log2Length(n);
        const std::vector<double> re = Noise(static_cast<std::size_t>(n), n),
                                  im = Noise(static_cast<std::size_t>(n), n + 1);
        std::vector<C64> x(static_cast<std::size_t>(len));
        for (int i = 0; i < n; ++i) x[i] = {re[i], im[i]};
        const std::vector<C64> X = Dft(x, -1);
        const double tol32 = 2e-4 * len, tol64 = 1e-9 * len;

        std::vector<C32> src32(static_cast<std::size_t>(n)), dst32(static_cast<std::size_t>(len));
        for (int i = 0; i < n; ++i)
            src32[i] = C32(static_cast<float>(re[i]), static_cast<float>(im[i]));
        lib_->FftForwardComplex32(src32.data(), dst32.data(), n);
        std::vector<C64> src64(x.begin(), x.begin() + n), dst64(static_cast<std::size_t>(len));
        lib_->FftForwardComplex64(src64.data(), dst64.data(), n);
        for (int f = 0; f < len; ++f) {
            ASSERT_NEAR(std::abs(C64(dst32[f]) - X[f]), 0, tol32) << n << " bin " << f;
            ASSERT_NEAR(std::abs(dst64[f] - X[f]), 0, tol64) << n << " bin " << f;
        }
        // Backward in place gives the input back, scaled by 1/length.
        lib_->FftBackwardComplex32(dst32.data(), dst32.data(), len);
        lib_->FftBackwardComplex64(dst64.data(), dst64.data(), len);
        for (int i = 0; i < len; ++i) {
            ASSERT_NEAR(std::abs(C64(dst32[i]) - x[i]), 0, 1e-5) << n << " at " << i;
            ASSERT_NEAR(std::abs(dst64[i] - x[i]), 0, 1e-12) << n << " at " << i;
        }

        // Real: the packed half spectrum, n/2 + 1 values in n + 2 reals.
        std::vector<C64> xr(static_cast<std::size_t>(len));
        for (int i = 0; i < n; ++i) xr[i] = re[i];
        const std::vector<C64> R = Dft(xr, -1);
        std::vector<float> r32(static_cast<std::size_t>(len) + 2);
        std::vector<double> r64(static_cast<std::size_t>(len) + 2);
        std::vector<float> in32(re.begin(), re.end());
        lib_->FftForwardReal32(in32.data(), r32.data(), n);
        lib_->FftForwardReal64(re.data(), r64.data(), n);
        for (int f = 0; f <= len / 2; ++f) {
            ASSERT_NEAR(r32[2 * f], R[f].real(), tol32) << n << " bin " << f;
            ASSERT_NEAR(r32[2 * f + 1], R[f].imag(), tol32) << n << " bin " << f;
            ASSERT_NEAR(r64[2 * f], R[f].real(), tol64);
            ASSERT_NEAR(r64[2 * f + 1], R[f].imag(), tol64);
        }
        std::vector<float> back32(static_cast<std::size_t>(len) + 2);
        lib_->FftBackwardReal32(r32.data(), back32.data(), len);
        lib_->FftBackwardReal64(r64.data(), r64.data(), len);
        for (int i = 0; i < len; ++i) {
            ASSERT_NEAR(back32[i], xr[i].real(), 1e-5) << n << " at " << i;
            ASSERT_NEAR(r64[i], xr[i].real(), 1e-12) << n << " at " << i;
        }
    }
    // A buffer off the vector alignment takes the other plan, with the same result.
    std::vector<float> raw(2 * 64 + 2);
    auto* odd = reinterpret_cast<C32*>(raw.data() + 1);
    std::vector<C32> aligned(64), in(64);
    for (int i = 0; i < 64; ++i) in[i] = C32(static_cast<float>(i % 7), static_cast<float>(-i % 3));
    lib_->FftForwardComplex32(in.data(), aligned.data(), 64);
    lib_->FftForwardComplex32(in.data(), odd, 64);
    for (int i = 0; i < 64; ++i) ASSERT_NEAR(std::abs(odd[i] - aligned[i]), 0.0f, 1e-4) << i;

    // 2^22 and above: nothing but the copy.
    const int huge = (1 << 22) + 1;
    std::vector<C32> big(static_cast<std::size_t>(1) << 23, C32(1.0f, 2.0f)), out(big.size());
    lib_->FftForwardComplex32(big.data(), out.data(), huge);
    EXPECT_EQ(out[0], C32(1.0f, 2.0f));
    EXPECT_EQ(out[huge - 1], C32(1.0f, 2.0f));
    EXPECT_EQ(out[huge], C32());
}

TEST_F(DSPLibTest, ElementWiseOperationsAndTheirEdges) {
    const std::vector<C32> a{{1, 2}, {3, -4}, {-0.5f, 0.25f}}, b{{2, -1}, {0, 1}, {4, 8}};
    std::vector<C32> out(3), conj(3);
    lib_->ComplexMultiply32(a.data(), b.data(), out.data(), 3);
    lib_->ComplexConjugateMultiply32(a.data(), b.data(), conj.data(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(out[i], a[i] * b[i]);
        EXPECT_EQ(conj[i], a[i] * std::conj(b[i]));
    }
    std::vector<C64> a64{{1, 2}, {3, -4}}, b64{{2, -1}, {0, 1}};
    lib_->ComplexMultiply64(a64.data(), b64.data(), a64.data(), 2);  // out over a
    EXPECT_EQ(a64[0], C64(4, 3));
    EXPECT_EQ(a64[1], C64(4, 3));

    const std::int16_t shorts[] = {-32768, 5, 32767};
    float floats[3];
    lib_->ShortToFloat(shorts, floats, 3);
    EXPECT_EQ(floats[0], -32768.0f);
    const float values[] = {40000.0f, -1.9f, 2.5f, 1e10f, std::nanf(""), 65536.0f + 7};
    std::int16_t back[6];
    lib_->FloatToShort(values, back, 6, 1.0f);
    EXPECT_EQ(back[0], -25536);  // wraps, no saturation
    EXPECT_EQ(back[1], -1);      // towards zero
    EXPECT_EQ(back[2], 2);
    EXPECT_EQ(back[3], 0);  // beyond 32 bits
    EXPECT_EQ(back[4], 0);
    EXPECT_EQ(back[5], 7);

    const float v[] = {1.0f, -7.5f, 3.0f};
    EXPECT_EQ(lib_->MaxAbsFloat(v, 3), 7.5f);
    EXPECT_EQ(lib_->MaxAbsFloat(v, 0), 0.0f);
    const std::int16_t only[] = {-32768};
    EXPECT_EQ(lib_->MaxAbsShort(only, 1), 32768);
    EXPECT_EQ(lib_->MaxAbsShort(only, 0), 0);

    std::vector<C32> mags{{3, 4}, {0, -2}, {-1, 0}};
    lib_->ComplexMagnitude(mags.data(), reinterpret_cast<float*>(mags.data()), 3);  // overlaid
    const float* m = reinterpret_cast<const float*>(mags.data());
    EXPECT_EQ(m[0], 5.0f);
    EXPECT_EQ(m[1], 2.0f);
    EXPECT_EQ(m[2], 1.0f);

    std::int16_t ten[10], dec[10];
    for (int i = 0; i < 10; ++i) ten[i] = static_cast<std::int16_t>(i * 10), dec[i] = -1;
    lib_->DecimateShort(ten, dec, 10, 3);
    EXPECT_EQ(std::vector<std::int16_t>(dec, dec + 4), (std::vector<std::int16_t>{0, 30, 60, -1}));
    lib_->DecimateShort(ten, dec, 10, 0);  // no step: nothing, and no division by zero
    EXPECT_EQ(dec[0], 0);
}

TEST_F(DSPLibTest, SolversOnHandWorkedMatrices) {
    // [[2, i], [-i, 2]]: eigenvalues 1 and 3, the larger with vector (i, 1)/sqrt 2.
    const std::vector<C32> full{{2, 0}, {0, -1}, {0, 1}, {2, 0}};  // column by column
    const std::vector<C32> packed{{2, 0}, {0, 1}, {2, 0}};         // upper: a00, a01, a11
    for (const bool p : {false, true}) {
        std::vector<C32> V(2, C32(9, 9));
        float w[1] = {0};
        lib_->HermitianEigen(p ? packed.data() : full.data(), 2, 1, V.data(), w, p);
        EXPECT_NEAR(w[0], 3.0f, 1e-5) << p;
        // Up to a phase: v0 = i v1.
        EXPECT_NEAR(std::abs(V[0] - C32(0, 1) * V[1]), 0.0f, 1e-5) << p;
        EXPECT_NEAR(std::norm(V[0]) + std::norm(V[1]), 1.0f, 1e-5);
        std::vector<C32> all(4);
        float both[2];
        lib_->HermitianEigen(p ? packed.data() : full.data(), 2, 2, all.data(), both, p);
        EXPECT_NEAR(both[0], 1.0f, 1e-5);
        EXPECT_NEAR(both[1], 3.0f, 1e-5);
    }
    std::vector<C32> untouched(101 * 101, C32(1, 0)), V(1, C32(7, 7));
    float w[1] = {-1};
    lib_->HermitianEigen(untouched.data(), 101, 1, V.data(), w, false);
    EXPECT_EQ(V[0], C32(7, 7));
    EXPECT_EQ(w[0], -1.0f);

    // A = [[1, i, 0], [2, 0, 1]] (2 by 3): A A^H = [[2, 2], [2, 5]], upper triangle written.
    const std::vector<C32> A{{1, 0}, {2, 0}, {0, 1}, {0, 0}, {0, 0}, {1, 0}};
    std::vector<C32> C(4, C32(-1, -1));
    lib_->HermitianProduct(A.data(), 2, 3, C.data(), false);
    EXPECT_EQ(C[0], C32(2, 0));
    EXPECT_EQ(C[2], C32(2, 0));
    EXPECT_EQ(C[3], C32(5, 0));

    // The packed form on a square matrix: row j is A times the m values from element j * m.
    const std::vector<C32> sq{{1, 0}, {0, 0}, {0, 0}, {2, 0}};  // diag(1, 2)
    std::vector<C32> P(3);
    lib_->HermitianProduct(sq.data(), 2, 2, P.data(), true);
    // Row 0 = A (1, 0) = (1, 0); row 1 = A (0, 2) = (0, 4); lower triangle by rows: 1, 0, 4.
    EXPECT_EQ(P, (std::vector<C32>{{1, 0}, {0, 0}, {4, 0}}));

    // diag(3, 1) padded to 3 by 2: singular values 3 and 1, U's first columns e0 and e1.
    const std::vector<C32> D{{3, 0}, {0, 0}, {0, 0}, {0, 0}, {1, 0}, {0, 0}};
    std::vector<C32> U(9);
    float S[2] = {0, 0};
    lib_->ComplexSvd(3, 2, D.data(), U.data(), S);
    EXPECT_NEAR(S[0], 3.0f, 1e-5);
    EXPECT_NEAR(S[1], 1.0f, 1e-5);
    EXPECT_NEAR(std::abs(U[0]), 1.0f, 1e-5);
    EXPECT_NEAR(std::abs(U[4]), 1.0f, 1e-5);
    float keep[1] = {42};
    lib_->ComplexSvd(12, 11, D.data(), U.data(), keep);  // over 125 values: nothing
    EXPECT_EQ(keep[0], 42.0f);
}

}  // namespace
}  // namespace halvo
