// The host with a small tree of test widgets in one window, each painting a
// plain fill and tracing the messages it receives on standard error as
// "ui frame=N NAME EVENT x,y/button". The tree, in UI coordinates:
//   window "probe"  (200,150) 300 by 200, fill (40, 40, 200)
//     "button"      (220,170) 100 by 40, fill (220, 40, 40)
//     "holder"      zero-sized at (450,300), with the floating child
//       "badge"     (480,330) 60 by 40, fill (40, 220, 40), reaching out of
//                   the window and painted over its later sibling
//     "late"        (420,310) 80 by 40, fill (240, 240, 40)
// Driven by tests/window/widgets.sh and widget_pixels.sh in a real window.
#include <cstdio>

#include "host/harborapp.h"
#include "ui/uimessage.h"
#include "ui/uipainter.h"
#include "ui/uisystem.h"
#include "ui/uiwindow.h"

namespace {

void trace(char const* name, char const* event, sPoint const& p = sPoint(0, 0), unsigned int button = 0)
{
    fprintf(stderr, "ui frame=%u %s %s %d,%d/%u\n", Application::getInstance()->getCurrentFrame(), name, event, p.x,
            p.y, button);
    fflush(stderr);
}

class ProbeWidget : public UIWindow {
public:
    ProbeWidget(char const* name, sRect const& rect, sColor color, unsigned int attribute = 0)
        : mpName(name), mColor(color)
    {
        setAttribute(attribute);
        setMinimumSize(sSize(0, 0));
        setPosition(rect.getTranslate());
        setSize(rect.getSize());
    }

    void eventPaint(UIPainter* painter) override { painter->drawRect(sRect(getSize()), mColor); }
    void eventCreate() override { trace(mpName, "Create"); }
    void eventFocus() override { trace(mpName, "Focus"); }
    void eventDefocus() override { trace(mpName, "Defocus"); }
    void eventActive() override
    {
        UIWindow::eventActive();
        trace(mpName, "Active");
    }
    void eventMouseMove(sPoint const& p) override { trace(mpName, "MouseMove", p); }
    void eventMouseDown(sPoint const& p, unsigned int button) override { trace(mpName, "MouseDown", p, button); }
    void eventMouseUp(sPoint const& p, unsigned int button) override { trace(mpName, "MouseUp", p, button); }
    void eventMouseDoubleClick(sPoint const& p, unsigned int button) override
    {
        trace(mpName, "DoubleClick", p, button);
    }
    void eventKeyDown(unsigned int key, unsigned int combination) override
    {
        trace(mpName, "KeyDown", sPoint(static_cast<int>(key), static_cast<int>(combination)));
    }

private:
    char const* mpName;
    sColor mColor;
};

class WidgetProbe : public HarborApp {
public:
    explicit WidgetProbe(sInitializer const* initializer) : HarborApp(initializer) {}

    void setup() override
    {
        HarborApp::setup();
        UISystem* ui = UISystem::getInstance();
        if (ui == nullptr) {
            return;
        }
        ProbeWidget* window = new ProbeWidget("probe", sRect(200, 150, 500, 350), sColor(40, 40, 200, 255));
        window->add(new ProbeWidget("button", sRect(20, 20, 120, 60), sColor(220, 40, 40, 255)));
        ProbeWidget* holder = new ProbeWidget("holder", sRect(250, 150, 250, 150), sColor(0, 0, 0, 255));
        holder->add(new ProbeWidget("badge", sRect(30, 30, 90, 70), sColor(40, 220, 40, 255),
                                    UIBase::eAttribute_Floating));
        window->add(holder);
        window->add(new ProbeWidget("late", sRect(220, 160, 300, 200), sColor(240, 240, 40, 255)));
        ui->addWindow(window);
    }

    void update(float delta) override
    {
        HarborApp::update(delta);
        if (!mReady) {
            fprintf(stderr, "probe ready\n");
            fflush(stderr);
            mReady = true;
        }
    }

private:
    bool mReady = false;
};

} // namespace

int main()
{
    return runHost<WidgetProbe>("Harbor Widget Probe");
}
