// Allocation cost of the named heaps against glibc malloc/free, per
// allocate-plus-release pair, in batches of 64 blocks released in LIFO or in
// shuffled order. Heaps are built the way MemoryManager builds them (thread
// safe); the GPAllocator is also measured without its lock.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "foundation/allocator.h"

namespace {

int const kBatch = 64;

std::vector<int> const& getShuffledOrder()
{
    static std::vector<int> order = [] {
        std::vector<int> result(kBatch);
        for (int i = 0; i < kBatch; ++i) {
            result[i] = i;
        }
        std::shuffle(result.begin(), result.end(), std::mt19937(7));
        return result;
    }();
    return order;
}

struct sMalloc {
    void* allocate(int size) { return malloc(static_cast<size_t>(size)); }
    void deallocate(void* pointer) { free(pointer); }
};

struct sHeap {
    AllocatorBase* mpAllocator;
    void* allocate(int size) { return mpAllocator->allocate(size, 4); }
    void deallocate(void* pointer) { mpAllocator->deallocate(pointer); }
};

template <typename Heap>
void runBatches(benchmark::State& state, Heap heap, bool shuffled)
{
    int const size = static_cast<int>(state.range(0));
    std::vector<int> const& order = getShuffledOrder();
    void* blocks[kBatch];
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            blocks[i] = heap.allocate(size);
            benchmark::DoNotOptimize(blocks[i]);
        }
        if (shuffled) {
            for (int i = 0; i < kBatch; ++i) {
                heap.deallocate(blocks[order[i]]);
            }
        } else {
            for (int i = kBatch - 1; i >= 0; --i) {
                heap.deallocate(blocks[i]);
            }
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void BM_Malloc_Lifo(benchmark::State& state) { runBatches(state, sMalloc(), false); }
void BM_Malloc_Shuffled(benchmark::State& state) { runBatches(state, sMalloc(), true); }

void BM_GPAllocator_Lifo(benchmark::State& state)
{
    GPAllocator heap(0x100000, "Bench", nullptr, 32, true);
    runBatches(state, sHeap{&heap}, false);
}

void BM_GPAllocator_Shuffled(benchmark::State& state)
{
    GPAllocator heap(0x100000, "Bench", nullptr, 32, true);
    runBatches(state, sHeap{&heap}, true);
}

void BM_GPAllocatorNoLock_Lifo(benchmark::State& state)
{
    GPAllocator heap(0x100000, "Bench", nullptr, 32, false);
    runBatches(state, sHeap{&heap}, false);
}

void BM_GPAllocatorNoLock_Shuffled(benchmark::State& state)
{
    GPAllocator heap(0x100000, "Bench", nullptr, 32, false);
    runBatches(state, sHeap{&heap}, true);
}

void BM_BlockAllocator_Lifo(benchmark::State& state)
{
    BlockAllocator heap(static_cast<u32>(state.range(0)), kBatch, "Bench", nullptr, true);
    runBatches(state, sHeap{&heap}, false);
}

void BM_BlockAllocator_Shuffled(benchmark::State& state)
{
    BlockAllocator heap(static_cast<u32>(state.range(0)), kBatch, "Bench", nullptr, true);
    runBatches(state, sHeap{&heap}, true);
}

// A batch of bump allocations released by one clear(), against the same
// number of malloc/free pairs.
void BM_InstantAllocator_BumpClear(benchmark::State& state)
{
    int const size = static_cast<int>(state.range(0));
    InstantAllocator heap(kBatch * 256, "Bench", nullptr, true);
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            void* block = heap.allocate(size, 4);
            benchmark::DoNotOptimize(block);
        }
        heap.clear();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}

void sizes(benchmark::internal::Benchmark* bench)
{
    for (int size : {16, 32, 64, 128, 256}) {
        bench->Arg(size);
    }
}

} // namespace

BENCHMARK(BM_Malloc_Lifo)->Apply(sizes);
BENCHMARK(BM_GPAllocator_Lifo)->Apply(sizes);
BENCHMARK(BM_GPAllocatorNoLock_Lifo)->Apply(sizes);
BENCHMARK(BM_BlockAllocator_Lifo)->Apply(sizes);
BENCHMARK(BM_Malloc_Shuffled)->Apply(sizes);
BENCHMARK(BM_GPAllocator_Shuffled)->Apply(sizes);
BENCHMARK(BM_GPAllocatorNoLock_Shuffled)->Apply(sizes);
BENCHMARK(BM_BlockAllocator_Shuffled)->Apply(sizes);
BENCHMARK(BM_InstantAllocator_BumpClear)->Apply(sizes);

HARBOR_BENCHMARK_MAIN()
