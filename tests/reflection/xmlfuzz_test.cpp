// Damaged files: thousands of mutated and truncated variants of a valid file
// are parsed and read into an object, each in a child process. Every variant
// must end normally or through the format assertion (abort); any other signal,
// a sanitizer report or a hang fails. The variants are the same in every run.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <thread>
#include <vector>

#include "reflectiontest.h"
#include "platform/process.h"

namespace {

int const kMutatedVariants = 1600;
int const kTruncatedVariants = 400;
int const kHangSeconds = 10;

// The sample file with its ids numbered from 1001, the same in every run.
std::string makeBaseFile(SampleResource* texture)
{
    SampleObject source;
    source.mConstStrings = false;
    source.fill(texture);
    std::string text = normalizeIds(writeObject(&source, "SampleObject", true));
    for (size_t at; (at = text.find("id=\"ID")) != std::string::npos;) {
        text.replace(at + 4, 2, "100"); // fewer than ten objects
    }
    return text;
}

// Variant index of kVariants, made afresh from its index wherever it is
// needed, so that no process holds them all.
int const kVariants = kMutatedVariants + kTruncatedVariants;

std::string makeVariant(std::string const& base, int index)
{
    std::mt19937 random(20240601u + static_cast<unsigned int>(index));
    auto pick = [&random](size_t limit) { return static_cast<size_t>(random() % limit); };
    if (index >= kMutatedVariants) {
        return base.substr(0, pick(base.size()));
    }
    static char const kInteresting[] = "<>/=\"? \t\n\r!0123456789-_.aZ";
    std::string text = base;
    int const steps = 1 + static_cast<int>(pick(3));
    for (int step = 0; step < steps && !text.empty(); ++step) {
        size_t const at = pick(text.size());
        char const interesting = kInteresting[pick(sizeof(kInteresting) - 1)];
        switch (pick(5)) {
        case 0: text[at] = static_cast<char>(pick(256)); break; // any byte, 0xFF (the end) and 0 included
        case 1: text[at] = interesting; break;
        case 2: text.erase(at, 1 + pick(16)); break;
        case 3: text.insert(pick(text.size()), text.substr(at, 1 + pick(64))); break;
        default: text.insert(at, 1, interesting); break;
        }
    }
    return text;
}

struct sFuzzRun {
    std::string const* mpBase;
    int mFirst;
    std::string mProgress;
};

// In the child: each variant in turn, from first, the index written ahead so
// that the parent knows where an abort happened. A variant that takes longer
// than kHangSeconds ends the child with status 99. The traces and assertion
// texts of thousands of children are not worth keeping.
void readVariants(void* user)
{
    sFuzzRun const& run = *static_cast<sFuzzRun const*>(user);
    freopen("/dev/null", "w", stderr);
    static std::atomic<long> current(-1);
    current = static_cast<long>(run.mFirst);
    std::thread([] {
        for (;;) {
            long const seen = current.load();
            std::this_thread::sleep_for(std::chrono::seconds(kHangSeconds));
            if (current.load() == seen) {
                std::_Exit(99);
            }
        }
    }).detach();

    for (int i = run.mFirst; i < kVariants; ++i) {
        current = static_cast<long>(i);
        writeFile(run.mProgress, std::to_string(i));
        // Objects made by a damaged file are left to the end of the child.
        SampleObject* target = new SampleObject();
        target->mConstStrings = false;
        readObject(target, "SampleObject", makeVariant(*run.mpBase, i));
    }
    std::_Exit(0);
}

} // namespace

TEST(XmlFuzz, DamagedFilesEndNormallyOrByTheFormatAssertion)
{
    SampleResource* texture = new SampleResource("native/ui/panel.tex");
    registerSampleResource("ui/panel", texture);
    std::string const base = makeBaseFile(texture);
    sFuzzRun run = {&base, 0, makeTempPath("fuzz_progress")};

    {
        SampleObject target;
        target.mConstStrings = false;
        EXPECT_EQ("", readTraces(&target, "SampleObject", base)) << "the valid file itself reads without a trace";
    }

    int children = 0, aborted = 0;
    std::vector<std::string> failed;
    while (run.mFirst < kVariants) {
        ++children;
        platform::sChildEnd const end = platform::runChild(readVariants, &run);
        if (end.mExited && end.mCode == 0) {
            break;
        }
        int const at = std::stoi("0" + readFile(run.mProgress));
        if (end.mSignaled && end.mSignal == SIGABRT) {
            ++aborted;
        } else {
            failed.push_back("variant " + std::to_string(at) + (end.mExited ? " exited with " : " died of signal ") +
                             std::to_string(end.mExited ? end.mCode : end.mSignal) + ":\n" + makeVariant(base, at));
        }
        run.mFirst = at + 1;
    }
    EXPECT_TRUE(failed.empty()) << failed.size() << " variants ended otherwise; the first is "
                                << (failed.empty() ? "" : failed[0]);
    printf("%d variants in %d children: %d ended by the format assertion, %d normally\n", kVariants, children, aborted,
           kVariants - aborted - static_cast<int>(failed.size()));
    clearSampleResources();
    texture->release();
}
