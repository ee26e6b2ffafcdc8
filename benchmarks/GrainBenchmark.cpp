#include "overlay/GrainCache.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

// The pixels of a large display.
constexpr lumo::Size size{5120, 2880};
constexpr std::size_t bytes = std::size_t{4} * 5120 * 2880;

void countBytes(benchmark::State &state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void grainRender(benchmark::State &state) {
    while (state.KeepRunning()) {
        auto image = lumo::makeFineGrainImage(size, 1);
        benchmark::DoNotOptimize(image->pixels.data());
    }
    countBytes(state);
}

// The peer: the same fresh memory, filled with one value.
void grainPeerMemsetOfFreshMemory(benchmark::State &state) {
    while (state.KeepRunning()) {
        std::vector<std::uint8_t> buffer(bytes, 0x80);
        benchmark::DoNotOptimize(buffer.data());
    }
    countBytes(state);
}

// The peer's best case: memory that has been touched before.
void grainPeerMemsetOfTouchedMemory(benchmark::State &state) {
    std::vector<std::uint8_t> buffer(bytes);
    while (state.KeepRunning()) {
        std::memset(buffer.data(), 0x80, bytes);
        benchmark::DoNotOptimize(buffer.data());
        benchmark::ClobberMemory();
    }
    countBytes(state);
}

BENCHMARK(grainRender)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(grainPeerMemsetOfFreshMemory)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(grainPeerMemsetOfTouchedMemory)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
