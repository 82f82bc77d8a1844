// The numeric library against values worked out independently: a plain DFT summed in double
// for the transforms, small matrices solved by hand for the solvers, and each edge case.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "dsp/DSPLibFftw.h"

namespace halvo {
namespace {

using C32 = std::complex<float>;
using C64 = std::complex<double>;

// The forward transform as defined: X[f] = sum x[t] e^(-2 pi i f t / n).
std::vector<C64> Dft(const std::vector<C64>& x) {
    const std::size_t n = x.size();
    std::vector<C64> out(n);
    for (std::size_t f = 0; f < n; ++f) {
        C64 sum = 0;
        for (std::size_t t = 0; t < n; ++t)
            sum += x[t] * std::polar(1.0, -2 * std::numbers::pi * double(f * t % n) / n);
        out[f] = sum;
    }
    return out;
}

class DSPLibTest : public ::testing::Test {
  protected:
    // One precision's four transforms of n noise values against the plain DFT (zero-filled to
    // the power of two), element by element in the packed real layout, and back again.
    template <typename T>
    void CheckTransforms(int n, double tol, auto fwdC, auto bwdC, auto fwdR, auto bwdR) {
        const auto len = std::size_t{1} << DSPLibFftw::Log2Length(n);
        std::mt19937 gen(static_cast<unsigned>(n));
        std::uniform_real_distribution<T> noise(-1, 1);
        std::vector<std::complex<T>> src(static_cast<std::size_t>(n)), dst(len);
        std::vector<T> real(static_cast<std::size_t>(n)), packed(len + 2), back(len + 2);
        for (auto& v : src) v = {noise(gen), noise(gen)};
        for (auto& v : real) v = noise(gen);
        std::vector<C64> x(len), xr(len);
        std::copy(src.begin(), src.end(), x.begin());
        std::copy(real.begin(), real.end(), xr.begin());
        const std::vector<C64> X = Dft(x), R = Dft(xr);
        (lib_.get()->*fwdC)(src.data(), dst.data(), n);
        (lib_.get()->*fwdR)(real.data(), packed.data(), n);
        for (std::size_t f = 0; f < len; ++f)
            ASSERT_NEAR(std::abs(C64(dst[f]) - X[f]), 0, tol * len) << n << " bin " << f;
        for (std::size_t f = 0; f <= len / 2; ++f) {  // n/2 + 1 values in n + 2 reals
            ASSERT_NEAR(packed[2 * f], R[f].real(), tol * len) << n << " real bin " << f;
            ASSERT_NEAR(packed[2 * f + 1], R[f].imag(), tol * len) << n << " real bin " << f;
        }
        // Backward, in place and from another buffer, gives the input back.
        (lib_.get()->*bwdC)(dst.data(), dst.data(), static_cast<int>(len));
        (lib_.get()->*bwdR)(packed.data(), back.data(), static_cast<int>(len));
        for (std::size_t i = 0; i < len; ++i) {
            ASSERT_NEAR(std::abs(C64(dst[i]) - x[i]), 0, tol * 10) << n << " at " << i;
            ASSERT_NEAR(back[i], xr[i].real(), tol * 10) << n << " real at " << i;
        }
    }
    std::unique_ptr<DSPLibIF> lib_ = CreateDSPLib(0);
};

TEST_F(DSPLibTest, TransformsMatchAPlainDftInBothPrecisions) {
    // Lengths that are powers of two, that are not (the caller's zero fill), and 1.
    for (const int n : {1, 2, 3, 8, 64, 600, 1024}) {
        CheckTransforms<float>(n, 2e-6, &DSPLibIF::FftForwardComplex32,
                               &DSPLibIF::FftBackwardComplex32, &DSPLibIF::FftForwardReal32,
                               &DSPLibIF::FftBackwardReal32);
        CheckTransforms<double>(n, 1e-12, &DSPLibIF::FftForwardComplex64,
                                &DSPLibIF::FftBackwardComplex64, &DSPLibIF::FftForwardReal64,
                                &DSPLibIF::FftBackwardReal64);
    }
}

TEST_F(DSPLibTest, TransformEdges) {
    // n of 0 or below runs over length 1 and copies nothing: a real transform of length 1 turns
    // {x} into the packed {x, 0}; a backward one reads its 2 reals and keeps the real part.
    for (const int n : {0, -3}) {
        const float src[3] = {1, 2, 3};
        float fwd[3] = {5, 9, 9}, bwd[3] = {4, 7, 9};
        lib_->FftForwardReal32(src, fwd, n);
        EXPECT_EQ(std::vector<float>(fwd, fwd + 3), (std::vector<float>{5, 0, 9})) << n;
        const double two[2] = {6, 8};
        double back[2] = {0, 0};
        lib_->FftBackwardReal64(two, back, n);  // copies 2 reals, then length 1
        EXPECT_EQ(back[0], 6.0) << n;
        lib_->FftBackwardReal32(bwd, bwd, n);
        EXPECT_EQ(bwd[0], 4.0f) << n;
    }
    // Only n values are copied: what the caller left past them takes part in the transform.
    const std::vector<C32> three{{1, 0}, {2, 0}, {3, 1}};
    std::vector<C32> four(4, C32(7, 0));
    lib_->FftForwardComplex32(three.data(), four.data(), 3);
    EXPECT_EQ(four[0], C32(13, 1));  // 1 + 2 + 3 + 7, the imaginary 1
    EXPECT_EQ(four[2], C32(-5, 1));  // 1 - 2 + 3 - 7

    // A buffer off the vector alignment takes the other plan, with the same result.
    std::vector<float> raw(2 * 64 + 2);
    auto* odd = reinterpret_cast<C32*>(raw.data() + 1);
    std::vector<C32> aligned(64), in(64);
    for (int i = 0; i < 64; ++i) in[i] = C32(static_cast<float>(i % 7), static_cast<float>(-i % 3));
    lib_->FftForwardComplex32(in.data(), aligned.data(), 64);
    lib_->FftForwardComplex32(in.data(), odd, 64);
    for (int i = 0; i < 64; ++i) ASSERT_NEAR(std::abs(odd[i] - aligned[i]), 0.0f, 1e-4) << i;

    // 2^21 is the longest transform; one value more (2^22) leaves the plain copy.
    const int longest = 1 << 21;
    std::vector<C32> big(static_cast<std::size_t>(longest) + 1, C32(1, 2)), out(2 * big.size());
    lib_->FftForwardComplex32(big.data(), out.data(), longest);
    EXPECT_EQ(out[0], C32(longest, 2.0f * longest));  // a constant: all in bin 0
    EXPECT_NEAR(std::abs(out[1]), 0.0f, 1e-2);
    std::fill(out.begin(), out.end(), C32());
    lib_->FftForwardComplex32(big.data(), out.data(), longest + 1);
    EXPECT_EQ(out[0], C32(1, 2));
    EXPECT_EQ(out[longest], C32(1, 2));
    EXPECT_EQ(out[longest + 1], C32());
}

TEST_F(DSPLibTest, ElementWiseOperationsAndTheirEdges) {
    // Products against std::complex, for an odd count, and written over either input.
    const std::vector<C32> a{{1, 2}, {3, -4}, {-0.5f, 0.25f}}, b{{2, -1}, {0, 1}, {4, 8}};
    std::vector<C32> out(3), conj(3), overA = a, overB = b;
    lib_->ComplexMultiply32(a.data(), b.data(), out.data(), 3);
    lib_->ComplexConjugateMultiply32(a.data(), b.data(), conj.data(), 3);
    lib_->ComplexMultiply32(overA.data(), b.data(), overA.data(), 3);
    lib_->ComplexConjugateMultiply32(a.data(), overB.data(), overB.data(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(out[i], a[i] * b[i]) << i;
        EXPECT_EQ(overA[i], out[i]) << i;
        EXPECT_EQ(conj[i], a[i] * std::conj(b[i])) << i;
        EXPECT_EQ(overB[i], conj[i]) << i;
    }
    lib_->ComplexMultiply32(a.data(), b.data(), out.data(), -1);  // nothing
    EXPECT_EQ(out[0], C32(4, 3));
    std::vector<C64> a64{{1, 2}, {3, -4}}, b64{{2, -1}, {0, 1}};
    lib_->ComplexMultiply64(a64.data(), b64.data(), a64.data(), 2);  // out over a
    EXPECT_EQ(a64, (std::vector<C64>{{4, 3}, {4, 3}}));

    const std::int16_t shorts[] = {-32768, -5, 32767};
    float floats[3];
    lib_->ShortToFloat(shorts, floats, 3);
    EXPECT_EQ(std::vector<float>(floats, floats + 3), (std::vector<float>{-32768, -5, 32767}));

    // FloatToShort: value, scale, the low 16 bits of the truncated product.
    const float inf = std::numeric_limits<float>::infinity();
    const struct {
        float value, scale;
        std::int16_t expect;
    } toShort[] = {
        {40000, 1, -25536}, {-40000, 1, 25536},  // wraps, no saturation
        {-1.9f, 1, -1},     {2.5f, 1, 2},        // towards zero
        {3, -2.5f, -7},     {65543, 1, 7},       // 0x10007
        {1e9f, 1, -13824},                       // 0x3B9ACA00: 0xCA00
        {25, 0.04f, 0},  // 0.99999998 in double; a float product would round up to 1
        {1e10f, 1, 0},      {2147483648.0f, 1, 0}, {-inf, 1, 0}, {std::nanf(""), 1, 0},
    };
    for (const auto& c : toShort) {
        std::int16_t got = 123;
        lib_->FloatToShort(&c.value, &got, 1, c.scale);
        EXPECT_EQ(got, c.expect) << c.value << " * " << c.scale;
    }

    const float v[] = {1.0f, -7.5f, 3.0f};
    EXPECT_EQ(lib_->MaxAbsFloat(v, 3), 7.5f);
    EXPECT_EQ(lib_->MaxAbsFloat(v + 1, 1), 7.5f);
    EXPECT_EQ(lib_->MaxAbsFloat(v, 1), 1.0f);
    EXPECT_EQ(lib_->MaxAbsFloat(v, 0), 0.0f);
    EXPECT_EQ(lib_->MaxAbsFloat(v, -4), 0.0f);
    const std::int16_t s[] = {-32768, 3, -5, 4};
    EXPECT_EQ(lib_->MaxAbsShort(s, 1), 32768);
    EXPECT_EQ(lib_->MaxAbsShort(s + 1, 3), 5);
    EXPECT_EQ(lib_->MaxAbsShort(s + 1, 1), 3);
    EXPECT_EQ(lib_->MaxAbsShort(s, 0), 0);

    std::vector<C32> mags{{3, 4}, {0, -2}, {-1, 0}};
    lib_->ComplexMagnitude(mags.data(), reinterpret_cast<float*>(mags.data()), 3);  // overlaid
    const float* m = reinterpret_cast<const float*>(mags.data());
    EXPECT_EQ(std::vector<float>(m, m + 3), (std::vector<float>{5, 2, 1}));

    // DecimateShort: n, step, the values written (elements 0, step, 2 step ... of 0..90).
    const struct {
        int n, step;
        std::vector<std::int16_t> expect;
    } decimate[] = {
        {10, 3, {0, 30, 60}}, {10, 1, {0, 10, 20, 30, 40, 50, 60, 70, 80, 90}},
        {10, 5, {0, 50}},     {2, 3, {}},
        {10, 0, {}},  // no step: no division by zero
        {10, -2, {}},         {-5, 1, {}},
    };
    std::int16_t ten[10];
    for (int i = 0; i < 10; ++i) ten[i] = static_cast<std::int16_t>(i * 10);
    for (const auto& c : decimate) {
        std::vector<std::int16_t> dst(11, -1);
        lib_->DecimateShort(ten, dst.data(), c.n, c.step);
        std::vector<std::int16_t> expect = c.expect;
        expect.resize(11, -1);
        EXPECT_EQ(dst, expect) << c.n << " / " << c.step;
    }
}

// ||M x - lambda x|| for a column-major n by n matrix.
float Residual(const std::vector<C32>& M, const C32* x, float lambda, int n) {
    float r = 0;
    for (int i = 0; i < n; ++i) {
        C32 sum = -lambda * x[i];
        for (int j = 0; j < n; ++j) sum += M[static_cast<std::size_t>(i + j * n)] * x[j];
        r += std::norm(sum);
    }
    return std::sqrt(r);
}

TEST_F(DSPLibTest, SolversOnHandWorkedMatrices) {
    const C32 i1(0, 1);
    // Hermitian matrices, full (column by column) and their eigenvalues ascending:
    // [[2, i], [-i, 2]] has 1 and 3; [[1, 0, 0], [0, 3, i], [0, -i, 3]] has 1, 2 and 4.
    const struct {
        int n;
        std::vector<C32> full;
        std::vector<float> values;
    } eigen[] = {
        {2, {2, -i1, i1, 2}, {1, 3}},
        {3, {1, 0, 0, 0, 3, -i1, 0, i1, 3}, {1, 2, 4}},
    };
    for (const auto& c : eigen) {
        std::vector<C32> packed;  // the upper triangle column by column
        for (int j = 0; j < c.n; ++j)
            for (int i = 0; i <= j; ++i)
                packed.push_back(c.full[static_cast<std::size_t>(i + j * c.n)]);
        for (int k = 1; k <= c.n; ++k) {
            for (const bool p : {false, true}) {
                std::vector<C32> V(static_cast<std::size_t>(c.n * k));
                std::vector<float> w(static_cast<std::size_t>(k));
                lib_->HermitianEigen(p ? packed.data() : c.full.data(), c.n, k, V.data(), w.data(),
                                     p);
                for (int e = 0; e < k; ++e) {  // the k largest, ascending
                    EXPECT_NEAR(w[e], c.values[c.n - k + e], 1e-5) << c.n << " k " << k << p;
                    const C32* x = V.data() + e * c.n;
                    EXPECT_NEAR(Residual(c.full, x, w[e], c.n), 0.0f, 1e-5) << c.n << " k " << k;
                    float norm = 0;
                    for (int i = 0; i < c.n; ++i) norm += std::norm(x[i]);
                    EXPECT_NEAR(norm, 1.0f, 1e-5);
                }
            }
        }
    }
    // Out of range: n of 0 or 101, k of 0 or above n. The outputs stay as they were.
    const std::vector<C32> big(101 * 101, C32(1, 0));
    for (const auto& [n, k] : {std::pair{101, 1}, {0, 0}, {2, 0}, {2, 3}}) {
        std::vector<C32> V(4, C32(7, 7));
        float w[3] = {-1, -1, -1};
        lib_->HermitianEigen(big.data(), n, k, V.data(), w, false);
        EXPECT_EQ(V[0], C32(7, 7)) << n << " " << k;
        EXPECT_EQ(w[0], -1.0f) << n << " " << k;
    }

    // A = [[1, i, 0], [2, 0, 1]] (2 by 3): A A^H = [[2, 2], [2, 5]], upper triangle written.
    const std::vector<C32> A{1, 2, i1, 0, 0, 1};
    std::vector<C32> C(4, C32(-1, -1));
    lib_->HermitianProduct(A.data(), 2, 3, C.data(), false);
    EXPECT_EQ(C, (std::vector<C32>{2, -1.0f - i1, 2, 5}));    // the lower corner untouched
    lib_->HermitianProduct(A.data(), 2, 0, C.data(), false);  // rank 0: zeros
    EXPECT_EQ(C, (std::vector<C32>{0, -1.0f - i1, 0, 0}));
    // Packed, square: no conjugate. [[2, i], [-i, 3]] is Hermitian, A A = A A^H =
    // [[5, 5i], [-5i, 10]]; [[1, i], [2, 0]] is not, and A A = [[1 + 2i, i], [2, 2i]].
    const struct {
        int n, m;
        std::vector<C32> a, expect;
    } packed[] = {
        {2, 2, {2, -i1, i1, 3}, {5, 5.0f * i1, 10}},
        {2, 2, {1, 2, i1, 0}, {1.0f + 2.0f * i1, i1, 2.0f * i1}},
        {2, 1, {i1, 2}, {-1, 0, 0}},            // rows from m on are 0, whatever the last call left
        {2, 3, {1, 2, 3, 4, 5, 6}, {9, 9, 9}},  // m above n: nothing
    };
    for (const auto& c : packed) {
        std::vector<C32> P(3, C32(9, 0));
        lib_->HermitianProduct(c.a.data(), c.n, c.m, P.data(), true);
        EXPECT_EQ(P, c.expect) << c.n << " by " << c.m;
    }

    // diag(3, 1) padded to 3 by 2: singular values 3 and 1, U's first columns e0 and e1; and
    // [[1, 2i], [0, 1]], whose A^H A has trace 6 and determinant 1: sqrt 2 + 1 and sqrt 2 - 1,
    // and whose left vectors u satisfy |A^H u| = s.
    const std::vector<C32> D{3, 0, 0, 0, 1, 0}, T{1, 0, 2.0f * i1, 1};
    std::vector<C32> U(9);
    float S[2] = {0, 0};
    lib_->ComplexSvd(3, 2, D.data(), U.data(), S);
    EXPECT_NEAR(S[0], 3.0f, 1e-5);
    EXPECT_NEAR(S[1], 1.0f, 1e-5);
    EXPECT_NEAR(std::abs(U[0]), 1.0f, 1e-5);
    EXPECT_NEAR(std::abs(U[4]), 1.0f, 1e-5);
    EXPECT_EQ(U[6], C32());  // the column past min(m, n)
    lib_->ComplexSvd(2, 2, T.data(), U.data(), S);
    EXPECT_NEAR(S[0], std::numbers::sqrt2_v<float> + 1, 1e-5);
    EXPECT_NEAR(S[1], std::numbers::sqrt2_v<float> - 1, 1e-5);
    for (int c = 0; c < 2; ++c) {
        const C32 u0 = U[2 * c], u1 = U[2 * c + 1];
        const C32 r0 = std::conj(T[0]) * u0 + std::conj(T[1]) * u1;  // (A^H u)
        const C32 r1 = std::conj(T[2]) * u0 + std::conj(T[3]) * u1;
        EXPECT_NEAR(std::sqrt(std::norm(r0) + std::norm(r1)), S[c], 1e-5) << c;
        EXPECT_NEAR(std::norm(u0) + std::norm(u1), 1.0f, 1e-5) << c;
    }
    // Over 125 values, a product beyond 32 bits, or no rows: nothing.
    for (const auto& [m, n] : {std::pair{12, 11}, {1 << 20, 1 << 20}, {0, 2}}) {
        float keep[1] = {42};
        lib_->ComplexSvd(m, n, D.data(), U.data(), keep);
        EXPECT_EQ(keep[0], 42.0f) << m << " by " << n;
    }
}

}  // namespace
}  // namespace halvo
