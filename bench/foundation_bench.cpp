// Foundation containers and strings against their standard counterparts:
// AutoString copy and assignment, Map::find, List churn.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <algorithm>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "foundation/list.h"
#include "foundation/map.h"

namespace {

// The host's "String" heap: 2 MiB, thread safe.
struct StringHeap {
    StringHeap() { AutoString::setAllocator(new GPAllocator(0x200000, "String", nullptr, 32, true)); }
    ~StringHeap() { AutoString::deleteAllocator(); }
};

std::string makeText(size_t length, char first)
{
    std::string text(length, 'x');
    text[0] = first;
    return text;
}

void AutoStringCopy(benchmark::State& state)
{
    StringHeap heap;
    {
        AutoString source(makeText(static_cast<size_t>(state.range(0)), 'a').c_str());
        for (auto _ : state) {
            AutoString copy(source);
            benchmark::DoNotOptimize(copy);
        }
    }
}

void StdStringCopy(benchmark::State& state)
{
    std::string source = makeText(static_cast<size_t>(state.range(0)), 'a');
    for (auto _ : state) {
        std::string copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

// Assignment alternating between two texts of equal length.
void AutoStringAssign(benchmark::State& state)
{
    StringHeap heap;
    {
        AutoString first(makeText(static_cast<size_t>(state.range(0)), 'a').c_str());
        AutoString second(makeText(static_cast<size_t>(state.range(0)), 'b').c_str());
        AutoString target;
        bool flip = false;
        for (auto _ : state) {
            target = flip ? first : second;
            flip = !flip;
            benchmark::DoNotOptimize(target);
        }
    }
}

void StdStringAssign(benchmark::State& state)
{
    std::string first = makeText(static_cast<size_t>(state.range(0)), 'a');
    std::string second = makeText(static_cast<size_t>(state.range(0)), 'b');
    std::string target;
    bool flip = false;
    for (auto _ : state) {
        target = flip ? first : second;
        flip = !flip;
        benchmark::DoNotOptimize(target);
    }
}

// 1,000 ascending ids (step 7), looked up in a scattered order.
int const kIdNum = 1000;

std::vector<u32> makeQueries()
{
    std::vector<u32> queries;
    u32 seed = 1;
    for (int i = 0; i < 4096; ++i) {
        seed = seed * 214013u + 2531011u;
        queries.push_back(1 + ((seed >> 8) % kIdNum) * 7);
    }
    return queries;
}

void MapFind(benchmark::State& state)
{
    static int values[kIdNum];
    Map<int> map;
    for (int i = 0; i < kIdNum; ++i) {
        map.add(&values[i], 1 + static_cast<u32>(i) * 7);
    }
    std::vector<u32> queries = makeQueries();
    size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(queries[next]));
        next = (next + 1) & 4095;
    }
}

void StdMapFind(benchmark::State& state)
{
    static int values[kIdNum];
    std::map<u32, int*> map;
    for (int i = 0; i < kIdNum; ++i) {
        map[1 + static_cast<u32>(i) * 7] = &values[i];
    }
    std::vector<u32> queries = makeQueries();
    size_t next = 0;
    for (auto _ : state) {
        auto found = map.find(queries[next]);
        benchmark::DoNotOptimize(found == map.end() ? nullptr : found->second);
        next = (next + 1) & 4095;
    }
}

void SortedVectorLowerBound(benchmark::State& state)
{
    static int values[kIdNum];
    std::vector<std::pair<u32, int*>> sorted;
    for (int i = 0; i < kIdNum; ++i) {
        sorted.emplace_back(1 + static_cast<u32>(i) * 7, &values[i]);
    }
    std::vector<u32> queries = makeQueries();
    size_t next = 0;
    for (auto _ : state) {
        u32 id = queries[next];
        auto found = std::lower_bound(sorted.begin(), sorted.end(), id,
                                      [](std::pair<u32, int*> const& entry, u32 key) { return entry.first < key; });
        benchmark::DoNotOptimize((found != sorted.end() && found->first == id) ? found->second : nullptr);
        next = (next + 1) & 4095;
    }
}

// A queue-like churn over 100 live entries: add at the back, take the front,
// and now and then take one from the middle.
void ListChurn(benchmark::State& state)
{
    static int values[128];
    List<int> list(128);
    for (int i = 0; i < 100; ++i) {
        list.addLast(&values[i]);
    }
    int step = 0;
    for (auto _ : state) {
        list.addLast(&values[step & 127]);
        if ((step & 15) == 0) {
            list.remove(list.begin() + 50);
            list.addFirst(&values[step & 127]);
        }
        list.remove(list.begin());
        ++step;
        benchmark::DoNotOptimize(list.size());
    }
}

void StdListChurn(benchmark::State& state)
{
    static int values[128];
    std::list<int*> list;
    for (int i = 0; i < 100; ++i) {
        list.push_back(&values[i]);
    }
    int step = 0;
    for (auto _ : state) {
        list.push_back(&values[step & 127]);
        if ((step & 15) == 0) {
            list.erase(std::next(list.begin(), 50));
            list.push_front(&values[step & 127]);
        }
        list.pop_front();
        ++step;
        benchmark::DoNotOptimize(list.size());
    }
}

} // namespace

BENCHMARK(AutoStringCopy)->Arg(8)->Arg(64)->Arg(512);
BENCHMARK(StdStringCopy)->Arg(8)->Arg(64)->Arg(512);
BENCHMARK(AutoStringAssign)->Arg(8)->Arg(64)->Arg(512);
BENCHMARK(StdStringAssign)->Arg(8)->Arg(64)->Arg(512);
BENCHMARK(MapFind);
BENCHMARK(StdMapFind);
BENCHMARK(SortedVectorLowerBound);
BENCHMARK(ListChurn);
BENCHMARK(StdListChurn);

HARBOR_BENCHMARK_MAIN()
