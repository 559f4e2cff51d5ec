#include "renderfixture.h"

#include <GL/gl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/application.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "platform/glcontext.h"
#include "platform/platform.h"
#include "reflection/property.h"
#include "resource/resourcebase.h"
#include "unit/unitbase.h"

namespace rendertest {

namespace {

class TestApplication : public Application {
public:
    TestApplication(sInitializer const* initializer, Clock* clock) : Application(initializer, clock) {}
    void setup() override {}
    void update(float) override {}
};

TestApplication* sApplication = nullptr;
bool sWindow = false;

// A clock that moves only when a test steps a frame, so that every frame
// updates with a delta of exactly 1.
class SteppedClock : public Application::Clock {
public:
    u64 getCount() override { return mNow; }
    void getTimebase(u64& numerator, u64& denominator) override
    {
        numerator = 1;
        denominator = 1;
    }
    void sleep(u32) override {}

    u64 mNow = 1000000000ull;
};
SteppedClock sClock;

class RenderEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        char const* display = getenv("DISPLAY");
        bool const wanted = display != nullptr && display[0] != '\0';
        // A fixed rate: every frame that is due counts as one nominal frame.
        Application::sInitializer initializer = {"Render test", static_cast<u32>(kWindowWidth),
                                                 static_cast<u32>(kWindowHeight), 60, 60, 60};
        platform::setHeadless(!wanted);
        sApplication = new TestApplication(&initializer, &sClock);
        if (wanted && sApplication->getWindowHandle() == nullptr) {
            fprintf(stderr, "DISPLAY is set but no window could be made: pixel tests skip.\n");
            delete sApplication;
            platform::setHeadless(true);
            sApplication = new TestApplication(&initializer, &sClock);
        }
        sApplication->checkInterval(); // the first tick only starts the count
        sWindow = wanted && !platform::isHeadless();
        if (sWindow) {
            platform::hideWindow(sApplication->getWindowHandle());
        }
        MemoryManager* memory = MemoryManager::getInstance();
        AutoString::setAllocator(memory->createAllocator(0x400000, "String"));
        sApplication->setTempAllocator(memory->createAllocator(0x1000000, "Temp"));
        PropertyBase::setAllocator(memory->createBlockAllocator(48, 0x4000, "Property"));
        System::setAllocator(memory->createAllocator(0x1000000, "System"));
        UnitBase::setAllocator(memory->createAllocator(0x1000000, "Unit"));
        ResourceBase::setAllocator(memory->createAllocator(0x4000000, "Resource"));
    }

    void TearDown() override
    {
        delete sApplication;
        sApplication = nullptr;
    }
};

[[maybe_unused]] testing::Environment* const sEnvironment = testing::AddGlobalTestEnvironment(new RenderEnvironment);

} // namespace

bool hasWindow()
{
    return sWindow;
}

void stepFrame()
{
    sClock.mNow += sApplication->getCountPerFrame();
    sApplication->checkInterval();
}

std::vector<sColor> readWindow()
{
    std::vector<sColor> pixels(static_cast<size_t>(kWindowWidth * kWindowHeight));
    glReadBuffer(GL_BACK);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, kWindowWidth, kWindowHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return pixels;
}

void RenderTest::SetUp()
{
    // Four threads whatever the machine, so that the parallel paths run.
    mpJobs = JobSystem::create(0x10000, 4);
    mpRender = RenderSystem::create();
    mpViews = ViewSystem::create();
    mpTools = ToolSystem::create();
    mpTools->setup(); // replays into the game views
}

void RenderTest::TearDown()
{
    mpTools->destroy();
    mpViews->destroy();
    mpRender->destroy();
    mpJobs->destroy();
}

void RenderTest::runFrame(std::function<void(DrawContext*)> const& record)
{
    mpRender->preprocess();
    mpTools->preprocess();
    DrawContext* context = mpRender->popContext();
    record(context);
    mpRender->pushContext(context);
    mpViews->update();
    mpTools->postprocess();
    mpRender->postprocess();
    mpRender->executeCommand();
    if (mpRender->hasContext()) {
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "GL error in the replay";
    }
}

std::vector<sCommand const*> RenderTest::sortedCommands() const
{
    std::vector<sCommand const*> commands;
    for (sCommand* const* entry = mpRender->getSortedEntry(); (*entry)->mType != sCommand::eType_End; ++entry) {
        commands.push_back(*entry);
    }
    return commands;
}

std::vector<sDrawCommand const*> RenderTest::sortedDraws() const
{
    std::vector<sDrawCommand const*> draws;
    for (sCommand const* command : sortedCommands()) {
        if (command->mType == sCommand::eType_Draw) {
            draws.push_back(static_cast<sDrawCommand const*>(command));
        }
    }
    return draws;
}

std::string RenderTest::drawSummary() const
{
    std::string summary;
    for (sDrawCommand const* draw : sortedDraws()) {
        char text[64];
        snprintf(text, sizeof(text), "%s%s %c%u%s b%u%s", summary.empty() ? "" : ", ", keyText(draw->mKey).c_str(),
                 "PLTQ"[draw->getPrimitiveType()], draw->getVertexCount(), draw->isTextured() ? "t" : "",
                 draw->getBlendMode(), draw->getTextureFiltering() == eTextureFiltering_Nearest ? " n" : "");
        summary += text;
    }
    return summary;
}

sColor RenderTest::readPixel(int x, int y) const
{
    return readWindow()[static_cast<size_t>((kWindowHeight - 1 - y) * kWindowWidth + x)];
}

void RenderTest::expectPixels(std::initializer_list<Probe> probes) const
{
    for (Probe const& probe : probes) {
        EXPECT_TRUE(nearColor(readPixel(probe.x, probe.y), probe.color, probe.tolerance))
            << "at (" << probe.x << ", " << probe.y << ")";
    }
}

void RenderTest::windowState(DrawContext* context, unsigned int level, unsigned int subLevel) const
{
    sRect const window(0, 0, kWindowWidth, kWindowHeight);
    context->setView(0);
    context->setDrawLevel(level, subLevel);
    context->setViewport(window);
    context->setScissorRect(window);
    context->setProjectionRect(window);
    context->setRenderTarget(nullptr);
}

void RenderTest::quad(DrawContext* context, sRect const& rect, sColor color) const
{
    sColor const colors[4] = {color, color, color, color};
    context->setVertexDecl(eVertexDecl_Plain);
    mpTools->drawRect(context, rect, colors);
}

std::string keyText(u32 key)
{
    char text[32];
    snprintf(text, sizeof(text), "v%x l%x s%x", key >> 28, (key >> 16) & 0xFFF, key & 0xFFFF);
    return text;
}

std::string colorText(u32 word)
{
    sColor color;
    memcpy(&color, &word, sizeof(color));
    return "(" + std::to_string(color.r) + "," + std::to_string(color.g) + "," + std::to_string(color.b) + "," +
           std::to_string(color.a) + ")";
}

::testing::AssertionResult nearColor(sColor actual, sColor expected, int tolerance)
{
    for (int i = 0; i < 3; ++i) {
        if (abs(static_cast<int>(actual[i]) - static_cast<int>(expected[i])) > tolerance) {
            return ::testing::AssertionFailure()
                   << "colour (" << int(actual.r) << ", " << int(actual.g) << ", " << int(actual.b) << "), expected ("
                   << int(expected.r) << ", " << int(expected.g) << ", " << int(expected.b) << ")";
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace rendertest
