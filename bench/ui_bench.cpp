// The widget toolkit's frame against Dear ImGui's. 20 real windows (title
// bar, system buttons, a size grip, a form of 50 rows of buttons with a
// vertical scroll bar) and the desktop's menu open: per frame the input
// routing with update and layout (UISystem::update) and the paint recording
// (UISystem::draw), wall and CPU time, on one job thread and on all of them.
// The same screen in Dear ImGui (20 windows of 50 buttons a row each with
// their scroll bars, and a window of the eight menu rows, NewFrame to
// Render, no GL back end) gives its CPU time per frame. Headless: only
// recording.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>

#include "app/application.h"
#include "machineload.h"
#include "uiharness.h"
#include "app/systemmanager.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "platform/platform.h"
#include "platform/window.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"
#include "ui/uibutton.h"
#include "ui/uidesktop.h"
#include "ui/uimenu.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"
#include "ui/uiwindow.h"

#ifdef HARBOR_BENCH_IMGUI
#include <imgui.h>
#endif

namespace {

int const kWindows = 20;
int const kWidgets = 50;
int const kCellWidth = 66;
int const kCellHeight = 18;
unsigned int const kWindowWidth = 340;
unsigned int const kWindowHeight = 240;

// "Widget0042": ten characters, the label of widget 42 of its window.
void label(char* text, int index)
{
    snprintf(text, 11, "Widget%04d", index);
}

class BenchWindow : public UIWindow {
public:
    explicit BenchWindow(int index)
        : UIWindow(eStyle_Convex, eWindowAttribute_TitleBar | eWindowAttribute_Movable | eWindowAttribute_Sizable, true,
                   true, true, UIForm::eFormAttribute_ScrollBar | UIForm::eFormAttribute_AutoAlign, nullptr)
    {
        snprintf(mTitle, sizeof(mTitle), "Window %d", index);
        setTitle(AutoString(mTitle));
        setPosition(sPoint(16 + index * 24, 16 + index * 16));
        setSize(sSize(kWindowWidth, kWindowHeight));
        for (int i = 0; i < kWidgets; ++i) {
            label(mLabels[i], i);
            UIButton* button = new UIButton();
            button->setAttribute(UIBase::eAttribute_RowItem);
            button->setCaption(mLabels[i]);
            button->setSize(sSize(kCellWidth - 2, kCellHeight - 2));
            addClient(button);
        }
    }

private:
    char mTitle[16];
    char mLabels[kWidgets][11];
};

// The engine's side, built once: a headless application with the Systems
// the UI stands on and the 20 windows, admitted by one preprocess.
class Harness {
public:
    static Harness& get()
    {
        static Harness* harness = new Harness();
        return *harness;
    }

    Harness()
    {
        mpApplication = startUIApplication("UI bench", false);
        SystemManager* manager = SystemManager::getInstance();
        UISystem* ui = UISystem::getInstance();
        for (int i = 0; i < kWindows; ++i) {
            ui->addWindow(new BenchWindow(i));
        }
        manager->preprocess();
        UIMenu* menu = ui->getDesktop()->getMenu();
        menu->initialize();
        menu->setPosition(sPoint(800, 100));
        ui->notifyMainMenuSelect(menu);
    }

    static void end()
    {
        delete get().mpApplication; // the Systems and the windows with them
    }

    BenchApplication* mpApplication = nullptr;
};

void BM_UIFrame(benchmark::State& state)
{
    Harness::get();
    JobSystem* jobs = JobSystem::getInstance();
    u32 const threads = state.range(0) == 0 ? Application::getInstance()->getProcessorNum() : 1u;
    jobs->setJobThreadNum(threads);
    SystemManager* manager = SystemManager::getInstance();
    UISystem* ui = UISystem::getInstance();
    double update = 0.0, paint = 0.0, cpuUpdate = 0.0, cpuPaint = 0.0;
    for (auto _ : state) {
        manager->preprocess();
        BenchClock::time_point start = BenchClock::now();
        std::clock_t cpuStart = std::clock();
        ui->update();
        double const updateTime = millisecondsSince(start);
        cpuUpdate += cpuMillisecondsSince(cpuStart);
        start = BenchClock::now();
        cpuStart = std::clock();
        ui->draw();
        double const paintTime = millisecondsSince(start);
        cpuPaint += cpuMillisecondsSince(cpuStart);
        update += updateTime;
        paint += paintTime;
        state.SetIterationTime((updateTime + paintTime) / 1000.0);
        manager->postprocess();
        RenderSystem::getInstance()->executeCommand();
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["threads"] = threads;
    state.counters["update_ms"] = update / frames;
    state.counters["paint_ms"] = paint / frames;
    state.counters["cpu_update_ms"] = cpuUpdate / frames;
    state.counters["cpu_paint_ms"] = cpuPaint / frames;
    state.counters["cpu_frame_ms"] = (cpuUpdate + cpuPaint) / frames;
}
BENCHMARK(BM_UIFrame)->ArgNames({"one_thread"})->Arg(1)->Arg(0)->UseManualTime()->Unit(benchmark::kMillisecond);

#ifdef HARBOR_BENCH_IMGUI
char const* const kMenuRows[] = {"SystemManager", "ResourceManager", "UnitManager", "TextureManager", nullptr,
                                 "Tool",          nullptr,           "Change Wallpaper"};

// The same screen in Dear ImGui: its whole frame, with the vertex lists it
// builds, on this thread.
void BM_ImGuiFrame(benchmark::State& state)
{
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    io.DisplaySize = ImVec2(1024.0f, 768.0f);
    io.IniFilename = nullptr;
    unsigned char* pixels = nullptr;
    int width = 0, height = 0;
    io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
    char title[16];
    char text[11];
    double cpu = 0.0;
    for (auto _ : state) {
        std::clock_t const cpuStart = std::clock();
        io.DeltaTime = 1.0f / 60.0f;
        ImGui::NewFrame();
        for (int w = 0; w < kWindows; ++w) {
            snprintf(title, sizeof(title), "Window %d", w);
            ImGui::SetNextWindowPos(ImVec2(16.0f + w * 24.0f, 16.0f + w * 16.0f), ImGuiCond_Always);
            ImGui::SetNextWindowSize(ImVec2(kWindowWidth, kWindowHeight), ImGuiCond_Always);
            ImGui::Begin(title);
            for (int i = 0; i < kWidgets; ++i) {
                label(text, i);
                ImGui::Button(text, ImVec2(-1.0f, 0.0f));
            }
            ImGui::End();
        }
        ImGui::SetNextWindowPos(ImVec2(800.0f, 100.0f), ImGuiCond_Always);
        ImGui::Begin("Menu", nullptr, ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize);
        for (char const* row : kMenuRows) {
            if (row == nullptr) {
                ImGui::Separator();
            } else {
                ImGui::Selectable(row);
            }
        }
        ImGui::End();
        ImGui::Render();
        benchmark::DoNotOptimize(ImGui::GetDrawData()->TotalVtxCount);
        cpu += cpuMillisecondsSince(cpuStart);
    }
    state.counters["cpu_frame_ms"] = cpu / static_cast<double>(state.iterations());
    state.counters["vertices"] = ImGui::GetDrawData()->TotalVtxCount;
    ImGui::DestroyContext();
}
BENCHMARK(BM_ImGuiFrame)->Unit(benchmark::kMillisecond);
#endif

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
