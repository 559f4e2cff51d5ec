// Lists and property forms, per frame: a UIList over an ObjectList of 1,000
// and of 10,000 rows, scrolled a few rows every frame, and a form of 200
// property controls (numbers, vectors, colours, flags, enumerations and text,
// made by Utils::makeUIFromControl). Each is one real window; the frame's
// update with layout (UISystem::update) and paint recording (UISystem::draw)
// are timed, CPU and wall, on one job thread. Headless: only recording. A
// list's cost should follow its visible rows, not its row count. Last, the
// whole frame of 1,000 live units with the unit information window open
// against closed: what the window adds.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>

#include "app/application.h"
#include "app/systemmanager.h"
#include "foundation/autostring.h"
#include "foundation/memorymanager.h"
#include "input/hidsystem.h"
#include "jobs/jobsystem.h"
#include "machineload.h"
#include "uiharness.h"
#include "platform/platform.h"
#include "reflection/control.h"
#include "reflection/objectlist.h"
#include "reflection/property.h"
#include "render/rendersystem.h"
#include "render/viewsystem.h"
#include "tool/toolsystem.h"
#include "tool/infowindow.h"
#include "ui/uilist.h"
#include "ui/uiscrollbar.h"
#include "ui/uisystem.h"
#include "ui/uiwindow.h"
#include "unit/coordinateunit.h"
#include "unit/unitsystem.h"

namespace {

// A row of the list: a name, a number and a flag.
class Row : public ObjectBase {
public:
    explicit Row(int index) : mValue(static_cast<u32>(index * 7)), mFlag(index % 3 == 0)
    {
        mName.format("Row%05d", index);
    }
    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
        list.add(new ReferenceProperty<u32>("Value", &mValue));
        list.add(new ReferenceProperty<bool>("Flag", &mFlag));
    }

private:
    AutoString mName;
    u32 mValue;
    bool mFlag;
};

sEnumInfo const kModes[] = {{"NONE", 0}, {"SOME", 1}, {"ALL", 2}};
sMaskInfo const kBits[] = {{"A", 1}, {"B", 2}, {"C", 4}};

// 200 controls: 25 rounds of eight kinds.
class FormObject : public ObjectBase {
public:
    static int const kRounds = 25;

    void makeControlList(List<ControlBase>& list) override
    {
        for (int i = 0; i < kRounds; ++i) {
            Values& v = mValues[i];
            list.addLast(new PropertyControl(new ReferenceProperty<s32>(kNames[0], &v.mInt), -1000, 1000));
            list.addLast(new PropertyControl(new ReferenceProperty<float>(kNames[1], &v.mFloat)));
            list.addLast(new PropertyControl(new ReferenceProperty<sFixed>(kNames[2], &v.mFixed)));
            list.addLast(new PropertyControl(new ReferenceProperty<sVector>(kNames[3], &v.mVector)));
            list.addLast(new PropertyControl(new ReferenceProperty<sColor>(kNames[4], &v.mColor)));
            list.addLast(new PropertyControl(new ReferenceProperty<bool>(kNames[5], &v.mBool)));
            list.addLast(new PropertyControl(new ReferenceProperty<u32>(kNames[6], &v.mMode), kModes, 3));
            list.addLast(new PropertyControl(new ReferenceProperty<AutoString>(kNames[7], &v.mText)));
        }
        (void)kBits;
    }

private:
    static char const* const kNames[8];
    struct Values {
        s32 mInt = 5;
        float mFloat = 1.5f;
        sFixed mFixed;
        sVector mVector;
        sColor mColor = sColor::White;
        bool mBool = true;
        u32 mMode = 1;
        AutoString mText = "text";
    };
    Values mValues[kRounds];
};
char const* const FormObject::kNames[8] = {"Int", "Float", "Fixed", "Vector", "Color", "Bool", "Mode", "Text"};

class Harness {
public:
    static Harness& get()
    {
        static Harness* harness = new Harness();
        return *harness;
    }

    Harness()
    {
        mpApplication = startUIApplication("Editor bench", true);
        JobSystem::getInstance()->setJobThreadNum(1);
    }

    static void end()
    {
        delete get().mpApplication;
    }

    BenchApplication* mpApplication = nullptr;
};

UIWindow* makeWindow(unsigned int formAttribute)
{
    UIWindow* window = new UIWindow(UIWindow::eStyle_Convex,
                                    UIWindow::eWindowAttribute_TitleBar | UIWindow::eWindowAttribute_Movable |
                                        UIWindow::eWindowAttribute_Sizable,
                                    true, true, true, formAttribute, nullptr);
    window->setPosition(sPoint(32, 32));
    window->setSize(sSize(480, 640));
    return window;
}

// Runs frames of one window; step is called before each frame.
template <typename Step>
void runFrames(benchmark::State& state, UIWindow* window, Step step)
{
    SystemManager* manager = SystemManager::getInstance();
    UISystem* ui = UISystem::getInstance();
    ui->addWindow(window);
    manager->preprocess();
    double update = 0.0, paint = 0.0, cpu = 0.0;
    for (auto _ : state) {
        step();
        manager->preprocess();
        BenchClock::time_point start = BenchClock::now();
        std::clock_t const cpuStart = std::clock();
        ui->update();
        double const updateTime = millisecondsSince(start);
        start = BenchClock::now();
        ui->draw();
        double const paintTime = millisecondsSince(start);
        cpu += cpuMillisecondsSince(cpuStart);
        update += updateTime;
        paint += paintTime;
        state.SetIterationTime((updateTime + paintTime) / 1000.0);
        manager->postprocess();
        RenderSystem::getInstance()->executeCommand();
    }
    double const frames = static_cast<double>(state.iterations());
    state.counters["update_ms"] = update / frames;
    state.counters["paint_ms"] = paint / frames;
    state.counters["cpu_frame_ms"] = cpu / frames;
}

void closeWindow(UIWindow* window)
{
    UISystem::getInstance()->removeWindow(window);
    SystemManager* manager = SystemManager::getInstance();
    manager->preprocess();
    manager->postprocess();
    RenderSystem::getInstance()->executeCommand();
}

void BM_ListFrame(benchmark::State& state)
{
    Harness::get();
    int const rows = static_cast<int>(state.range(0));
    ObjectList objects;
    objects.setContentStability(false);
    objects.reserve(static_cast<unsigned int>(rows));
    for (int i = 0; i < rows; ++i) {
        objects.addLast(new Row(i));
    }
    UIWindow* window = makeWindow(0);
    UIList* list = new UIList(false);
    list->addColumn("Name", 20, 120, eColumnAlignment_Left);
    list->addColumn("Value", 8, 80, eColumnAlignment_Right);
    list->addColumn("Flag", 1, 40, eColumnAlignment_Center);
    list->setPosition(sPoint(8, 24));
    list->setSize(sSize(440, 600));
    window->add(list);
    list->setObjectList(&objects);
    list->setSelectRow(3);
    int position = 0;
    runFrames(state, window, [&]() {
        // Three rows a frame, round and round.
        position = (position + 48) % (rows * UIList::kRowHeight - 600);
        list->getScrollBar()->setBarPosition(position);
    });
    state.counters["rows"] = rows;
    list->setObjectList(nullptr);
    closeWindow(window);
}
BENCHMARK(BM_ListFrame)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_PropertyFormFrame(benchmark::State& state)
{
    Harness::get();
    FormObject object;
    UIWindow* window = makeWindow(UIForm::eFormAttribute_ScrollBar | UIForm::eFormAttribute_AutoAlign);
    List<UIBase> widgets;
    object.makeUIList(widgets);
    for (UIBase* widget : widgets) {
        window->addClient(widget);
    }
    state.counters["controls"] = widgets.size();
    runFrames(state, window, []() {});
    closeWindow(window);
}
BENCHMARK(BM_PropertyFormFrame)->UseManualTime()->Unit(benchmark::kMillisecond);

// The host's frame over 1,000 coordinate units: preprocess, the unit and UI
// updates, UI paint, postprocess. CPU per frame, with the unit window open
// (argument 1) or not (0).
void BM_UnitInfoWindowFrame(benchmark::State& state)
{
    Harness::get();
    static bool populated = false;
    SystemManager* manager = SystemManager::getInstance();
    if (!populated) {
        for (int i = 0; i < 1000; ++i) {
            CoordinateUnit* unit = new CoordinateUnit();
            unit->setCategory(static_cast<u32>(i % 4));
            UnitSystem::getInstance()->addUnit(unit);
        }
        populated = true;
    }
    UIWindow* window = nullptr;
    if (state.range(0) != 0) {
        window = new UnitInfoWindow();
        UISystem::getInstance()->addWindow(window);
    }
    double cpu = 0.0;
    for (auto _ : state) {
        std::clock_t const start = std::clock();
        manager->preprocess();
        manager->update();
        UISystem::getInstance()->draw();
        manager->postprocess();
        cpu += cpuMillisecondsSince(start);
        RenderSystem::getInstance()->executeCommand();
    }
    state.counters["cpu_frame_ms"] = cpu / static_cast<double>(state.iterations());
    state.counters["units"] = UnitSystem::getInstance()->getUnitList().size();
    if (window != nullptr) {
        closeWindow(window);
    }
}
BENCHMARK(BM_UnitInfoWindowFrame)->ArgNames({"window_open"})->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv, &Harness::end);
}
