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

// A main that reports the load first; for benchmarks with nothing to end.
#define HARBOR_BENCHMARK_MAIN()                                                                                        \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        benchmark::Initialize(&argc, argv);                                                                            \
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {                                                      \
            return 1;                                                                                                  \
        }                                                                                                              \
        reportMachineLoad();                                                                                           \
        benchmark::RunSpecifiedBenchmarks();                                                                           \
        benchmark::Shutdown();                                                                                         \
        return 0;                                                                                                      \
    }
