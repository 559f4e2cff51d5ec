// The machine's load when a benchmark starts, put into the report's context
// (and so onto its first lines): figures taken on a busy machine say so.
#pragma once

#include <benchmark/benchmark.h>

#include <fstream>
#include <string>
#include <thread>

inline void reportMachineLoad()
{
    std::ifstream file("/proc/loadavg");
    std::string one, five, fifteen;
    if (!(file >> one >> five >> fifteen)) {
        one = five = fifteen = "?";
    }
    benchmark::AddCustomContext("load_average_1_5_15min", one + " " + five + " " + fifteen);
    benchmark::AddCustomContext("processors", std::to_string(std::thread::hardware_concurrency()));
}

// The body of a benchmark main: reports the load first, runs the benchmarks,
// then end (null: nothing to end) tears down what they built, so that the
// heaps' leak checks see it.
inline int runBenchmarks(int argc, char** argv, void (*end)() = nullptr)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    reportMachineLoad();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    if (end != nullptr) {
        end();
    }
    return 0;
}

#define HARBOR_BENCHMARK_MAIN()                                                                                        \
    int main(int argc, char** argv) { return runBenchmarks(argc, argv); }
