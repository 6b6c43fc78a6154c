// The parts of a scan and of the client report that cost time, one by one.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "base/hex.h"
#include "base/text_buffer.h"
#include "support/value_printer.h"

namespace {

void hexadecimalOfAValue(benchmark::State& state)
{
    auto const size = static_cast<std::size_t>(state.range(0));
    std::string const bytes(size, '\x5a');
    std::string text(Dovan::dumpHexLength(size) + Dovan::dumpHexSlack, '\0');
    for (auto _ : state) {
        benchmark::DoNotOptimize(Dovan::writeDumpHex(text.data(), bytes.data(), size));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(hexadecimalOfAValue)->Arg(4)->Arg(8)->Arg(64)->Arg(1000);

void hexadecimalOfANumber(benchmark::State& state)
{
    char text[8];
    std::uint32_t number = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Dovan::writeHex(text, number));
        number = number * 1664525 + 1013904223;
    }
}
BENCHMARK(hexadecimalOfANumber);

template <typename Value>
void textOf(benchmark::State& state, char const* type, Value value)
{
    auto const* const printer = Dovan::Platform::getValuePrinter(type, sizeof value);
    Dovan::TextBuffer text;
    for (auto _ : state) {
        text.clear();
        printer->append(text, &value);
        benchmark::ClobberMemory();
    }
}
BENCHMARK_CAPTURE(textOf, int32, "int32_t", std::int32_t{-123456789});
BENCHMARK_CAPTURE(textOf, int64, "int64_t", std::int64_t{1234567890123456789});
BENCHMARK_CAPTURE(textOf, double, "double", 1234.5678);

}  // namespace

BENCHMARK_MAIN();
