// The numeric library's cost over the bare library it sits on: forward complex single-precision
// transforms of 2^10 to 2^16 through the interface and through a bare FFTW plan in the same run
// (the interface should cost nothing: a ratio of at least 0.9), and the complex multiply of the
// correlation loops against a plain loop over std::complex.

#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <complex>
#include <vector>

#include "dsp/DSPLibIF.h"

namespace halvo {
namespace {

using C32 = std::complex<float>;

std::vector<C32> Signal(int n) {
    std::vector<C32> v(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        v[i] = C32(static_cast<float>(i % 17) - 8, static_cast<float>(i % 5));
    return v;
}

void InterfaceForward(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto lib = CreateDSPLib(0);
    const std::vector<C32> src = Signal(n);
    std::vector<C32> dst(src.size());
    lib->FftForwardComplex32(src.data(), dst.data(), n);  // the plan is made once, outside
    for (auto _ : state) {
        lib->FftForwardComplex32(src.data(), dst.data(), n);
        benchmark::DoNotOptimize(dst.data());
    }
    state.SetItemsProcessed(state.iterations());
}

// What the interface does, by hand: copy, then the cached plan in place.
void BareForward(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<C32> src = Signal(n);
    std::vector<C32> dst(src.size());
    auto* d = reinterpret_cast<fftwf_complex*>(dst.data());
    fftwf_plan plan = fftwf_plan_dft_1d(n, d, d, FFTW_FORWARD, FFTW_ESTIMATE);
    for (auto _ : state) {
        std::copy(src.begin(), src.end(), dst.begin());
        fftwf_execute(plan);
        benchmark::DoNotOptimize(dst.data());
    }
    fftwf_destroy_plan(plan);
    state.SetItemsProcessed(state.iterations());
}

void InterfaceMultiply(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto lib = CreateDSPLib(0);
    const std::vector<C32> a = Signal(n), b = Signal(n);
    std::vector<C32> out(a.size());
    for (auto _ : state) {
        lib->ComplexMultiply32(a.data(), b.data(), out.data(), n);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void PlainMultiply(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<C32> a = Signal(n), b = Signal(n);
    std::vector<C32> out(a.size());
    for (auto _ : state) {
        for (int i = 0; i < n; ++i) out[i] = a[i] * b[i];
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

BENCHMARK(InterfaceForward)->RangeMultiplier(2)->Range(1 << 10, 1 << 16);
BENCHMARK(BareForward)->RangeMultiplier(2)->Range(1 << 10, 1 << 16);
BENCHMARK(InterfaceMultiply)->Arg(4096)->Arg(65536);
BENCHMARK(PlainMultiply)->Arg(4096)->Arg(65536);

}  // namespace
}  // namespace halvo

BENCHMARK_MAIN();
