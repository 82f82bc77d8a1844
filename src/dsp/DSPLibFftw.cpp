#include "dsp/DSPLibFftw.h"

#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <cblas.h>
#include <fftw3.h>
#include <lapacke.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>

namespace halvo {

namespace {

// FFTW's planner is one per process: instances on other threads must not plan at once.
std::mutex& PlannerMutex() {
    static std::mutex m;
    return m;
}

constexpr unsigned kPlanFlags = FFTW_ESTIMATE;
constexpr int kMaxEigen = 100;
constexpr int kMaxSvdValues = 125;

template <typename T>
void CopyIn(const T* src, T* dst, std::size_t count) {
    if (src != dst && count > 0) std::memmove(dst, src, count * sizeof(T));
}

}  // namespace

std::unique_ptr<DSPLibIF> CreateDSPLib(int) {
    return std::make_unique<DSPLibFftw>();
}

int DSPLibFftw::Log2Length(int n) {
    int k = 0;
    while (k < 31 && (std::int64_t{1} << k) < n) ++k;
    return k;
}

DSPLibFftw::~DSPLibFftw() {
    std::lock_guard lock(PlannerMutex());
    for (const auto& set : plans_) {
        for (int t = 0; t < kTables; ++t) {
            for (void* p : set[t]) {
                if (p == nullptr) continue;
                if (t < C64F) {
                    fftwf_destroy_plan(static_cast<fftwf_plan>(p));
                } else {
                    fftw_destroy_plan(static_cast<fftw_plan>(p));
                }
            }
        }
    }
}

void* DSPLibFftw::Plan(Table table, int k, bool aligned) {
    if (k < 0 || k > kMaxLog2) return nullptr;
    void*& slot = plans_[aligned ? 1 : 0][table][static_cast<std::size_t>(k)];
    if (slot != nullptr) return slot;
    const int len = 1 << k;
    const unsigned flags = kPlanFlags | (aligned ? 0u : unsigned{FFTW_UNALIGNED});
    std::lock_guard lock(PlannerMutex());
    // Planned in place on scratch of the caller's shape, then run on the caller's buffers.
    if (table < C64F) {
        auto* buf = static_cast<float*>(fftwf_malloc(sizeof(float) * (2 * std::size_t(len) + 2)));
        if (buf == nullptr) return nullptr;
        auto* c = reinterpret_cast<fftwf_complex*>(buf);
        switch (table) {
            case C32F:
                slot = fftwf_plan_dft_1d(len, c, c, FFTW_FORWARD, flags);
                break;
            case C32B:
                slot = fftwf_plan_dft_1d(len, c, c, FFTW_BACKWARD, flags);
                break;
            case R32F:
                slot = fftwf_plan_dft_r2c_1d(len, buf, c, flags);
                break;
            default:
                slot = fftwf_plan_dft_c2r_1d(len, c, buf, flags);
                break;
        }
        fftwf_free(buf);
    } else {
        auto* buf = static_cast<double*>(fftw_malloc(sizeof(double) * (2 * std::size_t(len) + 2)));
        if (buf == nullptr) return nullptr;
        auto* c = reinterpret_cast<fftw_complex*>(buf);
        switch (table) {
            case C64F:
                slot = fftw_plan_dft_1d(len, c, c, FFTW_FORWARD, flags);
                break;
            case C64B:
                slot = fftw_plan_dft_1d(len, c, c, FFTW_BACKWARD, flags);
                break;
            case R64F:
                slot = fftw_plan_dft_r2c_1d(len, buf, c, flags);
                break;
            default:
                slot = fftw_plan_dft_c2r_1d(len, c, buf, flags);
                break;
        }
        fftw_free(buf);
    }
    return slot;
}

// ---- transforms ----

void DSPLibFftw::FftForwardReal32(const float* src, float* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    if (auto* p = static_cast<fftwf_plan>(Plan(R32F, k, fftwf_alignment_of(dst) == 0)))
        fftwf_execute_dft_r2c(p, dst, reinterpret_cast<fftwf_complex*>(dst));
}

void DSPLibFftw::FftForwardReal64(const double* src, double* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    if (auto* p = static_cast<fftw_plan>(Plan(R64F, k, fftw_alignment_of(dst) == 0)))
        fftw_execute_dft_r2c(p, dst, reinterpret_cast<fftw_complex*>(dst));
}

void DSPLibFftw::FftBackwardReal32(const float* src, float* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)) + 2);
    auto* p = static_cast<fftwf_plan>(Plan(R32B, k, fftwf_alignment_of(dst) == 0));
    if (p == nullptr) return;
    fftwf_execute_dft_c2r(p, reinterpret_cast<fftwf_complex*>(dst), dst);
    const int len = 1 << k;
    const auto scale = static_cast<float>(1.0 / len);
    for (int i = 0; i < len; ++i) dst[i] *= scale;
}

void DSPLibFftw::FftBackwardReal64(const double* src, double* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)) + 2);
    auto* p = static_cast<fftw_plan>(Plan(R64B, k, fftw_alignment_of(dst) == 0));
    if (p == nullptr) return;
    fftw_execute_dft_c2r(p, reinterpret_cast<fftw_complex*>(dst), dst);
    const int len = 1 << k;
    const double scale = 1.0 / len;
    for (int i = 0; i < len; ++i) dst[i] *= scale;
}

void DSPLibFftw::FftForwardComplex32(const Complex32* src, Complex32* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    auto* c = reinterpret_cast<fftwf_complex*>(dst);
    if (auto* p = static_cast<fftwf_plan>(
            Plan(C32F, k, fftwf_alignment_of(reinterpret_cast<float*>(dst)) == 0)))
        fftwf_execute_dft(p, c, c);
}

void DSPLibFftw::FftForwardComplex64(const Complex64* src, Complex64* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    auto* c = reinterpret_cast<fftw_complex*>(dst);
    if (auto* p = static_cast<fftw_plan>(
            Plan(C64F, k, fftw_alignment_of(reinterpret_cast<double*>(dst)) == 0)))
        fftw_execute_dft(p, c, c);
}

void DSPLibFftw::FftBackwardComplex32(const Complex32* src, Complex32* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    auto* c = reinterpret_cast<fftwf_complex*>(dst);
    auto* p = static_cast<fftwf_plan>(
        Plan(C32B, k, fftwf_alignment_of(reinterpret_cast<float*>(dst)) == 0));
    if (p == nullptr) return;
    fftwf_execute_dft(p, c, c);
    const int len = 1 << k;
    const auto scale = static_cast<float>(1.0 / len);
    for (int i = 0; i < len; ++i) dst[i] *= scale;
}

void DSPLibFftw::FftBackwardComplex64(const Complex64* src, Complex64* dst, int n) {
    const int k = Log2Length(n);
    CopyIn(src, dst, static_cast<std::size_t>(std::max(n, 0)));
    auto* c = reinterpret_cast<fftw_complex*>(dst);
    auto* p = static_cast<fftw_plan>(
        Plan(C64B, k, fftw_alignment_of(reinterpret_cast<double*>(dst)) == 0));
    if (p == nullptr) return;
    fftw_execute_dft(p, c, c);
    const int len = 1 << k;
    const double scale = 1.0 / len;
    for (int i = 0; i < len; ++i) dst[i] *= scale;
}

// ---- element-wise ----

// Each element is read whole before it is written, so out may be a or b. Written out in real
// arithmetic: the compiler vectorises it, and no library call checks for infinities on the way.
void DSPLibFftw::ComplexMultiply32(const Complex32* a, const Complex32* b, Complex32* out, int n) {
    for (int i = 0; i < n; ++i) {
        const float ar = a[i].real(), ai = a[i].imag(), br = b[i].real(), bi = b[i].imag();
        out[i] = {ar * br - ai * bi, ar * bi + ai * br};
    }
}

void DSPLibFftw::ComplexConjugateMultiply32(const Complex32* a, const Complex32* b, Complex32* out,
                                            int n) {
    for (int i = 0; i < n; ++i) {
        const float ar = a[i].real(), ai = a[i].imag(), br = b[i].real(), bi = b[i].imag();
        out[i] = {ar * br + ai * bi, ai * br - ar * bi};
    }
}

void DSPLibFftw::ComplexMultiply64(const Complex64* a, const Complex64* b, Complex64* out, int n) {
    for (int i = 0; i < n; ++i) {
        const double ar = a[i].real(), ai = a[i].imag(), br = b[i].real(), bi = b[i].imag();
        out[i] = {ar * br - ai * bi, ar * bi + ai * br};
    }
}

void DSPLibFftw::ShortToFloat(const std::int16_t* src, float* dst, int n) {
    for (int i = 0; i < n; ++i) dst[i] = src[i];
}

void DSPLibFftw::FloatToShort(const float* src, std::int16_t* dst, int n, float scale) {
    for (int i = 0; i < n; ++i) {
        const double v = std::trunc(static_cast<double>(src[i]) * scale);
        // Outside 32 bits, or not a number: the processor's "integer indefinite" (only its sign
        // bit set), whose low 16 bits are 0.
        const std::int32_t whole = (v >= -2147483648.0 && v <= 2147483647.0)
                                       ? static_cast<std::int32_t>(v)
                                       : std::numeric_limits<std::int32_t>::min();
        dst[i] = static_cast<std::int16_t>(static_cast<std::uint16_t>(whole & 0xFFFF));
    }
}

float DSPLibFftw::MaxAbsFloat(const float* v, int n) {
    if (n < 1) return 0.0f;
    const auto index = static_cast<int>(cblas_isamax(n, v, 1));
    return std::fabs(v[std::clamp(index, 0, n - 1)]);
}

int DSPLibFftw::MaxAbsShort(const std::int16_t* v, int n) {
    int hi = 0, lo = 0;
    for (int i = 0; i < n; ++i) {
        hi = std::max<int>(hi, v[i]);
        lo = std::min<int>(lo, v[i]);
    }
    return std::max(hi, -lo);
}

void DSPLibFftw::ComplexMagnitude(const Complex32* src, float* dst, int n) {
    // Element i is read before float i is written, and float i never lies past element i: dst
    // may overlay src.
    for (int i = 0; i < n; ++i) {
        const float re = src[i].real(), im = src[i].imag();
        dst[i] = std::sqrt(re * re + im * im);
    }
}

void DSPLibFftw::DecimateShort(const std::int16_t* src, std::int16_t* dst, int n, int step) {
    if (step < 1) return;
    const int count = n / step;
    for (int j = 0; j < count; ++j) dst[j] = src[static_cast<std::size_t>(j) * step];
}

// ---- solvers ----

void DSPLibFftw::HermitianEigen(const Complex32* A, int n, int k, Complex32* V, float* w,
                                bool packed) {
    static_assert(sizeof(lapack_int) == sizeof(int), "the work arrays hold 32-bit integers");
    if (n < 1 || n > kMaxEigen || k < 1 || k > n) return;
    const auto nn = static_cast<std::size_t>(n);
    EigenWork& e = eigen_;
    if (e.n != n) {
        // Sized once per n, so a run of same-sized problems allocates nothing: the full route's
        // lengths from the solver's own query, at least the packed route's 2n, 7n and 5n.
        e.n = 0;
        e.matrix.resize(nn * nn);
        e.vectors.resize(nn * nn);
        e.values.resize(nn);
        e.support.resize(2 * nn);
        Complex32 lwork;
        float lrwork = 0;
        lapack_int liwork = 0, found = 0;
        if (LAPACKE_cheevr_work(LAPACK_COL_MAJOR, 'V', 'I', 'U', n, e.matrix.data(), n, 0.0f, 0.0f,
                                1, n, 0.0f, &found, e.values.data(), e.vectors.data(), n,
                                e.support.data(), &lwork, -1, &lrwork, -1, &liwork, -1) != 0)
            return;
        e.work.resize(std::max(static_cast<std::size_t>(lwork.real()), 2 * nn));
        e.rwork.resize(std::max(static_cast<std::size_t>(lrwork), 7 * nn));
        e.iwork.resize(std::max(static_cast<std::size_t>(liwork), 5 * nn));
        e.n = n;
    }
    // The solvers overwrite the matrix: they work on a copy, so A is not changed.
    std::copy_n(A, packed ? nn * (nn + 1) / 2 : nn * nn, e.matrix.begin());
    lapack_int found = 0;
    // The k largest: indices n-k+1 to n of the ascending order.
    const lapack_int il = n - k + 1, iu = n;
    lapack_int info = 0;
    if (packed) {
        info = LAPACKE_chpevx_work(LAPACK_COL_MAJOR, 'V', 'I', 'U', n, e.matrix.data(), 0.0f, 0.0f,
                                   il, iu, 0.0f, &found, e.values.data(), e.vectors.data(), n,
                                   e.work.data(), e.rwork.data(), e.iwork.data(), e.support.data());
    } else {
        info = LAPACKE_cheevr_work(LAPACK_COL_MAJOR, 'V', 'I', 'U', n, e.matrix.data(), n, 0.0f,
                                   0.0f, il, iu, 0.0f, &found, e.values.data(), e.vectors.data(), n,
                                   e.support.data(), e.work.data(),
                                   static_cast<lapack_int>(e.work.size()), e.rwork.data(),
                                   static_cast<lapack_int>(e.rwork.size()), e.iwork.data(),
                                   static_cast<lapack_int>(e.iwork.size()));
    }
    if (info != 0 || found != k) return;
    std::copy_n(e.vectors.begin(), nn * static_cast<std::size_t>(k), V);
    std::copy_n(e.values.begin(), static_cast<std::size_t>(k), w);
}

void DSPLibFftw::HermitianProduct(const Complex32* A, int n, int m, Complex32* C, bool packed) {
    if (n < 1 || m < 0) return;
    const auto nn = static_cast<std::size_t>(n);
    const Complex32 one(1.0f, 0.0f), zero(0.0f, 0.0f);
    if (!packed) {
        // Rank 0 is an empty sum: the upper triangle becomes 0, as the rank-k update leaves it.
        cblas_cherk(CblasColMajor, CblasUpper, CblasNoTrans, n, m, 1.0f, A, n, 0.0f, C, n);
        return;
    }
    // The packed form works row by row: row j of the scratch is A times the m values that start
    // at element j * m of A, for j below m, then the lower triangle of the scratch is packed in
    // row order, which is the upper triangle column by column. Nothing is conjugated: for a
    // square A this is the upper triangle of A times A, which is A times its conjugate transpose
    // when A is Hermitian (a covariance, say). With m above n those values would lie past A, so
    // such a call does nothing; with m below n the rows from m on are not computed and read as
    // 0, never as what an earlier call left there.
    if (m > n) return;
    if (product_.size() < nn * nn) product_.resize(nn * nn);
    for (int j = 0; j < m; ++j) {
        cblas_cgemv(CblasColMajor, CblasNoTrans, n, m, &one, A, n,
                    A + static_cast<std::size_t>(j) * static_cast<std::size_t>(m), 1, &zero,
                    product_.data() + static_cast<std::size_t>(j) * nn, 1);
    }
    std::fill(product_.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(m) * nn),
              product_.begin() + static_cast<std::ptrdiff_t>(nn * nn), zero);
    std::size_t out = 0;
    for (std::size_t i = 0; i < nn; ++i) {
        for (std::size_t j = 0; j <= i; ++j) C[out++] = product_[i * nn + j];
    }
}

void DSPLibFftw::ComplexSvd(int m, int n, const Complex32* A, Complex32* U, float* S) {
    // The product in 64 bits: two large counts must not overflow into a small one.
    if (m < 1 || n < 1 || std::int64_t{m} * n > kMaxSvdValues) return;
    const auto mm = static_cast<std::size_t>(m), ns = static_cast<std::size_t>(n);
    std::vector<Complex32> a(A, A + mm * ns);
    std::vector<Complex32> u(mm * mm), vt(ns * ns);
    std::vector<float> s(std::max(mm, ns)), superb(std::max(mm, ns));
    const lapack_int info = LAPACKE_cgesvd(LAPACK_COL_MAJOR, 'S', 'N', m, n, a.data(), m, s.data(),
                                           u.data(), m, vt.data(), n, superb.data());
    if (info != 0) return;
    std::copy_n(s.begin(), ns, S);
    std::copy_n(u.begin(), mm * mm, U);
}

}  // namespace halvo
