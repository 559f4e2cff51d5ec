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
#include "serial/stream.h"
#include "platform/process.h"
#include "serial/xmlreader.h"

namespace {

int const kMutatedVariants = 1600;
int const kTruncatedVariants = 400;
int const kHangSeconds = 10;

// The sample file with its ids numbered from 1001, so that the base file is
// the same in every run.
std::string makeBaseFile(SampleResource* texture)
{
    SampleObject source;
    source.mConstStrings = false;
    source.fill(texture);
    std::string text = normalizeIds(writeObject(&source, "SampleObject", true));
    std::string::size_type position;
    while ((position = text.find("id=\"ID")) != std::string::npos) {
        std::string::size_type const end = text.find('"', position + 4);
        int const number = std::stoi(text.substr(position + 6, end - position - 6));
        text.replace(position, end + 1 - position, "id=\"" + std::to_string(1000 + number) + "\"");
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
        switch (pick(5)) {
        case 0: // any byte, 0xFF (the end) and 0 included
            text[at] = static_cast<char>(pick(256));
            break;
        case 1:
            text[at] = kInteresting[pick(sizeof(kInteresting) - 1)];
            break;
        case 2:
            text.erase(at, 1 + pick(16));
            break;
        case 3: {
            size_t const length = 1 + pick(64);
            text.insert(pick(text.size()), text.substr(at, length));
            break;
        }
        default:
            text.insert(at, 1, kInteresting[pick(sizeof(kInteresting) - 1)]);
            break;
        }
    }
    return text;
}

struct sFuzzRun {
    std::string const* mpBase;
    int mFirst;
    std::string mProgress;
    std::string mInput;
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
        long seen = -2;
        auto since = std::chrono::steady_clock::now();
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            long const now = current.load();
            if (now != seen) {
                seen = now;
                since = std::chrono::steady_clock::now();
            } else if (std::chrono::steady_clock::now() - since > std::chrono::seconds(kHangSeconds)) {
                std::_Exit(99);
            }
        }
    }).detach();

    for (int i = run.mFirst; i < kVariants; ++i) {
        current = static_cast<long>(i);
        FILE* file = fopen(run.mProgress.c_str(), "w");
        fprintf(file, "%d", i);
        fclose(file);
        writeFile(run.mInput, makeVariant(*run.mpBase, i));
        // Objects made by a damaged file are left to the end of the child.
        SampleObject* target = new SampleObject();
        target->mConstStrings = false;
        TextFileStream stream(run.mInput.c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        reader.read(target, "SampleObject");
    }
    std::_Exit(0);
}

} // namespace

TEST(XmlFuzz, DamagedFilesEndNormallyOrByTheFormatAssertion)
{
    SampleResource* texture = new SampleResource("native/ui/panel.tex");
    registerSampleResource("ui/panel", texture);
    std::string const base = makeBaseFile(texture);
    sFuzzRun run = {&base, 0, makeTempPath("fuzz_progress"), makeTempPath("fuzz_input.xml")};

    // The valid file itself reads without a single trace.
    {
        testing::internal::CaptureStderr();
        SampleObject target;
        target.mConstStrings = false;
        readObject(&target, "SampleObject", base);
        EXPECT_EQ("", testing::internal::GetCapturedStderr());
        EXPECT_EQ(15, static_cast<SampleLeaf*>(target.mGappedList[2])->mValue);
    }

    int children = 0;
    int aborted = 0;
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
