// Property controls: numeric clamping and the text forms of each value type,
// the typing rules of text fields, commit on Return or loss of focus, the
// slide button's factors and the 10-pixel step of integers, and a form made
// from an object with one property of every value type, edited through real
// mouse and key events and kept through a round trip of the settings file.
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/utils.h"
#include "host/settingsfile.h"
#include "jobs/jobsystem.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/textureresource.h"
#include "ui/uicontrol.h"
#include "ui/uicontrolcomposite.h"
#include "ui/uidialog.h"
#include "ui/uilist.h"
#include "ui/uimessage.h"
#include "uitest.h"

using namespace uitest;

namespace {

// The usage that types c: lower-case letters, digits, "-" and ".".
u32 usageOf(char c)
{
    if (c >= 'a' && c <= 'z') {
        return kUsageA + static_cast<u32>(c - 'a');
    }
    if (c >= '1' && c <= '9') {
        return kUsage1 + static_cast<u32>(c - '1');
    }
    switch (c) {
    case '0':
        return kUsage0;
    case '-':
        return kUsageMinus;
    case '.':
        return kUsagePeriod;
    default:
        return kUsageSpace;
    }
}

uNumeric numeric(long long value)
{
    uNumeric n;
    n.mS64 = value;
    return n;
}

// One property of every value type, with a flag mask, an enumeration and a
// trigger, as a game class would offer them.
#define EVERY_VALUE(X)                                                                                              \
    X(bool, Bool) X(s8, S8) X(s16, S16) X(s32, S32) X(s64, S64) X(u8, U8) X(u16, U16) X(u32, U32) X(u64, U64)     \
    X(float, F32) X(double, F64) X(sSize, Size) X(sPoint, Point) X(sRect, Rect) X(sColor, Color) X(sColorF, ColorF) \
    X(sTexcoord, Texcoord) X(sFixed, Fixed) X(sVector, Vector) X(AutoString, Text) X(u32, Flags) X(u32, Mode)

class Everything : public ObjectBase {
public:
    Everything()
    {
        mColorF = sColorF(1.0f, 1.0f, 1.0f, 1.0f);
        mText = "old";
    }
#define EVERY_FIELD(T, Name) T m##Name = T();
    EVERY_VALUE(EVERY_FIELD)
#undef EVERY_FIELD
    s32 mAdded = 0;

    void add(s32 amount) { mAdded += amount; }

    void makePropertyList(PropertyList& list) override
    {
#define EVERY_PROPERTY(T, Name) list.add(new ReferenceProperty<T>(#Name, &m##Name));
        EVERY_VALUE(EVERY_PROPERTY)
#undef EVERY_PROPERTY
    }

    void makeControlList(List<ControlBase>& list) override
    {
        static sMaskInfo const masks[] = {{"Solid", 1}, {"Glow", 2}, {"Loop", 4}};
        static sEnumInfo const modes[] = {{"DISC", 0}, {"UNIFORMLY_DISC", 1}, {"RING", 7}};
        PropertyList properties;
        makePropertyList(properties);
        for (PropertyList::Iterator it = properties.begin(); it != properties.end(); ++it) {
            PropertyBase* property = *it;
            std::string const name = property->getName();
            if (name == "Flags") {
                list.addLast(new PropertyControl(property, masks, 3));
            } else if (name == "Mode") {
                list.addLast(new PropertyControl(property, modes, 3));
            } else if (name == "S16") {
                list.addLast(new PropertyControl(property, static_cast<s16>(-100), static_cast<s16>(100)));
            } else {
                list.addLast(new PropertyControl(property));
            }
        }
        list.addLast(new TriggerControl<s32>("Add", this, &Everything::add));
    }

    DECLARE_TYPEINFO(UniqueTypeInfo<Everything>)
};

IMPLEMENT_OBJECT_TYPEINFO(Everything, "ObjectBase");

// "Name=text " for every property of the object, in its order.
std::string describe(ObjectBase& object)
{
    PropertyList properties;
    object.makePropertyList(properties);
    std::string text;
    char buffer[128];
    for (PropertyList::Iterator it = properties.begin(); it != properties.end(); ++it) {
        text += std::string((*it)->getName()) + "=" + (*it)->getString(buffer, PropertyBase::CurrentIndex) + " ";
    }
    return text;
}

} // namespace

class ControlTest : public UITest {
protected:
    // A window at (0, 16) whose client area aligns its widgets in rows.
    UIWindow* openForm(sSize size = sSize(636, 460))
    {
        UIWindow* window = new UIWindow(UIWindow::eStyle_Convex, UIWindow::eWindowAttribute_TitleBar, false, false,
                                        false, UIForm::eFormAttribute_AutoAlign, nullptr);
        window->setPosition(sPoint(0, 16));
        window->setSize(size);
        mpUI->addWindow(window);
        frame();
        return window;
    }
    template <typename W>
    W* place(UIWindow* window, W* widget)
    {
        window->addClient(widget);
        frame();
        frame();
        return widget;
    }
    void typeText(char const* text)
    {
        for (char const* c = text; *c != '\0'; ++c) {
            type(usageOf(*c));
        }
    }
    // Clicks the left part of a widget, clear of a slide button.
    void clickOn(UIBase const* widget, int dx = 4)
    {
        sRect const r = widget->getAbsRegion();
        ASSERT_LT(r.bottom, 480) << "the widget lies in the view";
        tap(r.left + dx, (r.top + r.bottom) / 2);
    }
    // Focus, type, Return.
    void enter(UIBase const* field, char const* text)
    {
        clickOn(field);
        typeText(text);
        type(kUsageReturn);
    }
};

TEST_F(ControlTest, NumericValuesClampToLimitsAndTypeRangesAndShowTheirTextForms)
{
    // Each case: a property of one type holding a value (given as its text),
    // a field with limits or the type's range, a typed text or a step, and
    // the property's and the field's texts afterwards.
    uNumeric u8Low = numeric(10);
    uNumeric u8High = numeric(20);
    uNumeric f32Low = numeric(0);
    uNumeric f32High = numeric(0);
    f32Low.mF32 = -1.0f;
    f32High.mF32 = 1.0f;
    uNumeric s32Low = numeric(0);
    uNumeric s32High = numeric(0);
    s32Low.mS32 = 0x7FFFFFFF; // reversed, as a control's full s32 range: no limit
    s32High.mS32 = static_cast<s32>(0x80000000u);
    uNumeric const none = numeric(0);
    UIControl::eMode const dec = UIControl::eMode_Decimal;
    UIControl::eMode const hex = UIControl::eMode_Hexadecimal;
    struct sCase {
        char const* mName;
        unsigned int mType;
        char const* mInitial;
        bool mLimited;
        uNumeric mMinimum;
        uNumeric mMaximum;
        UIControl::eMode mMode;
        char const* mTyped; // null: a step of mStep instead
        float mStep;
        char const* mValue;
        char const* mText;
    } const cases[] = {
        {"u8 250 + 10 saturates", ePropertyType_U8, "250", false, none, none, dec, nullptr, 10.0f, "255", "255"},
        {"s8 -120 - 20 saturates", ePropertyType_S8, "-120", false, none, none, dec, nullptr, -20.0f, "-128", "-128"},
        {"s16 steps truncate", ePropertyType_S16, "5", false, none, none, dec, nullptr, 2.9f, "7", "7"},
        {"u8 typed above the type", ePropertyType_U8, "1", false, none, none, dec, "300", 0, "255", "255"},
        {"u8 typed below the limits", ePropertyType_U8, "15", true, u8Low, u8High, dec, "5", 0, "10", "10"},
        {"a text that does not parse is 0, clamped", ePropertyType_U8, "15", true, u8Low, u8High, dec, "x", 0, "10",
         "10"},
        {"reversed s32 limits are no limit", ePropertyType_S32, "0", true, s32Low, s32High, dec, "-2000000000", 0,
         "-2000000000", "-2000000000"},
        {"s32 saturates at its end", ePropertyType_S32, "2147483647", false, none, none, dec, nullptr, 1.0f,
         "2147483647", "2147483647"},
        {"u32 stops at 0", ePropertyType_U32, "3", false, none, none, dec, nullptr, -5.0f, "0", "0"},
        {"s64 saturates; the field shows every digit", ePropertyType_S64, "9223372036854775807", false, none, none, dec,
         nullptr, 1.0f, "-1", "9223372036854775807"},
        {"u64 stops at 0", ePropertyType_U64, "2", false, none, none, dec, nullptr, -5.0f, "0", "0"},
        {"u64 saturates at all ones", ePropertyType_U64, "-1", false, none, none, dec, nullptr, 1.0f, "-1",
         "18446744073709551615"},
        {"f32 typed", ePropertyType_F32, "0", false, none, none, dec, "2.5", 0, "2.500000", "2.500000"},
        {"f32 clamps to the limits", ePropertyType_F32, "0", true, f32Low, f32High, dec, "-7", 0, "-1.000000",
         "-1.000000"},
        {"f64 steps", ePropertyType_F64, "0.25", false, none, none, dec, nullptr, 1.0f, "1.250000", "1.250000"},
        {"fixed typed", ePropertyType_Fixed, "0", false, none, none, dec, "-1.5", 0, "-1.500000", "-1.500000"},
        {"fixed saturates", ePropertyType_Fixed, "40000", false, none, none, dec, nullptr, 1.0f, "32768.000000",
         "32768.000000"},
        {"hexadecimal parses base 16", ePropertyType_U16, "0", false, none, none, hex, "beef", 0, "48879", "beef"},
        {"hexadecimal shows the type's width", ePropertyType_S8, "0", false, none, none, hex, "ff", 0, "-1", "ff"},
    };
    for (sCase const& c : cases) {
        uNumeric storage = numeric(0);
        PropertyBase* property = nullptr;
        switch (c.mType) {
        case ePropertyType_S8: property = new ReferenceProperty<s8>("v", &storage.mS8); break;
        case ePropertyType_S16: property = new ReferenceProperty<s16>("v", &storage.mS16); break;
        case ePropertyType_S32: property = new ReferenceProperty<s32>("v", &storage.mS32); break;
        case ePropertyType_S64: property = new ReferenceProperty<s64>("v", &storage.mS64); break;
        case ePropertyType_U8: property = new ReferenceProperty<u8>("v", &storage.mU8); break;
        case ePropertyType_U16: property = new ReferenceProperty<u16>("v", &storage.mU16); break;
        case ePropertyType_U32: property = new ReferenceProperty<u32>("v", &storage.mU32); break;
        case ePropertyType_U64: property = new ReferenceProperty<u64>("v", &storage.mU64); break;
        case ePropertyType_F32: property = new ReferenceProperty<float>("v", &storage.mF32); break;
        case ePropertyType_F64: property = new ReferenceProperty<double>("v", &storage.mF64); break;
        default: property = new ReferenceProperty<sFixed>("v", &storage.mFixed); break;
        }
        property->setString(c.mInitial);
        UINumericControl* field =
            c.mLimited ? new UINumericControl(property, c.mMinimum, c.mMaximum, false, UIControl::NoIndex, c.mMode)
                       : new UINumericControl(property, false, UIControl::NoIndex, c.mMode);
        field->setSize(sSize(200, 16));
        field->sendMessage(UIBeginEditMessage());
        if (c.mTyped != nullptr) {
            for (char const* t = c.mTyped; *t != '\0'; ++t) {
                unsigned int const code = (*t >= 'a' && *t <= 'z') ? static_cast<unsigned int>(*t - 'a' + 'A') : *t;
                field->sendMessage(UIKeyDownMessage(code, 0));
            }
            EXPECT_STREQ(field->getText().c_str(), c.mTyped) << c.mName;
            field->apply();
        } else {
            field->addNumeric(c.mStep);
        }
        char buffer[64];
        EXPECT_STREQ(property->getString(buffer, PropertyBase::CurrentIndex), c.mValue) << c.mName;
        EXPECT_STREQ(field->getText().c_str(), c.mText) << c.mName;
        delete field;
    }
}

TEST_F(ControlTest, TextFieldsTypeByTheUSKeyTableWithItsOddities)
{
    AutoString value = "abc";
    UITextControl* field = new UITextControl(new ReferenceProperty<AutoString>("v", &value), false,
                                             UIControl::NoIndex, UIControl::eMode_Decimal);
    field->setSize(sSize(62, 16)); // 10 characters show
    struct sKey {
        unsigned int mCode;
        unsigned int mCombination;
    };
    unsigned int const shift = UISystem::eCombinationKey_Shift;
    unsigned int const command = UISystem::eCombinationKey_Command;
    struct sCase {
        char const* mName;
        std::vector<sKey> mKeys; // after the whole text "abc" was selected
        char const* mText;
        unsigned int mCursor;
        unsigned int mSelectBegin;
        unsigned int mSelectEnd;
    };
    unsigned int const none = 0xFFFFFFFFu;
    std::vector<sCase> const cases = {
        {"a letter replaces the selection, lower case", {{'X', 0}}, "x", 1, none, none},
        {"capitals only with Shift alone", {{'X', shift}, {'Y', shift | command}, {'Z', command}}, "Xyz", 3, none, none},
        {"digits whatever the modifiers", {{'7', shift}, {'8', command}}, "78", 2, none, none},
        {"minus, point, backslash, underscore, bar", {{'-', 0}, {'.', 0}, {'\\', 0}, {'\\', shift}, {']', 0}, {']', shift}},
         "-.\\_\\|", 6, none, none},
        {"no space and no other punctuation", {{' ', 0}, {';', 0}, {',', 0}, {'/', 0}}, "abc", 3, 0, 3},
        {"BackSpace deletes the selection, then one before", {{8, 0}, {'Q', 0}, {'R', 0}, {8, 0}}, "q", 1, none, none},
        {"Left and Delete", {{160, 0}, {160, 0}, {127, 0}}, "ac", 1, none, none},
        {"Shift+Left grows from the old position", {{162, 0}, {160, shift}, {160, shift}}, "abc", 1, 1, 3},
        {"Shift+Right shrinks the end it stands on", {{166, 0}, {162, shift}, {162, shift}, {160, shift}}, "abc", 1, 0, 1},
        {"Shift+Home spans to the old cursor", {{162, 0}, {160, 0}, {166, shift}}, "abc", 0, 0, 2},
        {"End, then typing appends", {{167, 0}, {'D', 0}}, "abcd", 4, none, none},
    };
    for (sCase const& c : cases) {
        value = "abc";
        field->sendMessage(UIBeginEditMessage());
        for (sKey const& k : c.mKeys) {
            field->sendMessage(UIKeyDownMessage(k.mCode, k.mCombination));
        }
        EXPECT_STREQ(field->getText().c_str(), c.mText) << c.mName;
        EXPECT_EQ(field->getCursor(), c.mCursor) << c.mName;
        EXPECT_EQ(field->getSelectBegin(), c.mSelectBegin) << c.mName;
        EXPECT_EQ(field->getSelectEnd(), c.mSelectEnd) << c.mName;
        EXPECT_STREQ(value.c_str(), "abc") << c.mName << ": nothing is committed while typing";
        field->sendMessage(UIEndEditMessage());
    }
    // The cursor stays in view: 10 columns of (62 - 2) / 6.
    field->sendMessage(UIBeginEditMessage());
    for (int i = 0; i < 14; ++i) {
        field->sendMessage(UIKeyDownMessage('K', 0));
    }
    EXPECT_EQ(field->getCursor(), 14u);
    EXPECT_EQ(field->getScroll(), 4u);
    field->sendMessage(UIKeyDownMessage(166, 0));
    EXPECT_EQ(field->getScroll(), 0u);
    // An empty text commits nothing.
    field->selectAll();
    field->sendMessage(UIKeyDownMessage(8, 0));
    field->apply();
    EXPECT_STREQ(value.c_str(), "abc");
    delete field;
}

TEST_F(ControlTest, TypedValuesCommitOnReturnOrWhenTheFocusGoesAndReadOnlyFieldsTakeNoFocus)
{
    u16 value = 7;
    u16 fixedValue = 3;
    UIWindow* window = openForm();
    uNumeric low;
    uNumeric high;
    UINumericControl::getTypeRange(ePropertyType_U16, low, high);
    UIParameterControl* parameter =
        place(window, new UIParameterControl(new ReferenceProperty<u16>("Speed", &value), low, high, false,
                                             UIControl::NoIndex, UIControl::eMode_Decimal));
    parameter->setDefaultSize();
    UIParameterControl* readOnly =
        place(window, new UIParameterControl(new ReferenceProperty<u16>("Fixed", &fixedValue), low, high, true,
                                             UIControl::NoIndex, UIControl::eMode_Decimal));
    readOnly->setDefaultSize();
    frame();
    UINumericControl* field = static_cast<UINumericControl*>(parameter->getValueControl());

    clickOn(field);
    EXPECT_EQ(mpUI->getFocus(), field);
    EXPECT_TRUE(field->isEditing());
    typeText("42");
    EXPECT_EQ(value, 7) << "nothing changes while typing";
    type(kUsageReturn);
    EXPECT_EQ(value, 42);
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    EXPECT_FALSE(field->isEditing());

    // Up and Down step at once, each an edit of its own.
    clickOn(field);
    type(kUsageUp);
    type(kUsageUp);
    type(kUsageDown);
    EXPECT_EQ(value, 43);
    // Typed, then a click elsewhere: the loss of the focus commits.
    typeText("99");
    EXPECT_EQ(value, 43);
    tap(630, 4); // the desktop, above the window
    EXPECT_EQ(value, 99);
    EXPECT_EQ(mpUI->getFocus(), nullptr);
    clickOn(readOnly->getValueControl());
    EXPECT_EQ(mpUI->getFocus(), nullptr) << "a read-only field cannot take the focus";
    UINumericControl* shown = static_cast<UINumericControl*>(readOnly->getValueControl());
    EXPECT_EQ(shown->getSlideButton(), nullptr) << "a read-only field has no slide button";
}

TEST_F(ControlTest, SlideButtonDragsByOnePerPixelWithShiftAHundredthWithControlAndTenPixelStepsForIntegers)
{
    s32 integer = 100;
    float real = 1.0f;
    UIWindow* window = openForm();
    UINumericControl* whole = place(window, new UINumericControl(new ReferenceProperty<s32>("i", &integer), false,
                                                                 UIControl::NoIndex, UIControl::eMode_Decimal));
    whole->setSize(sSize(120, 16));
    UINumericControl* fraction = place(window, new UINumericControl(new ReferenceProperty<float>("f", &real), false,
                                                                    UIControl::NoIndex, UIControl::eMode_Decimal));
    fraction->setSize(sSize(120, 16));
    frame();
    struct sCase {
        char const* mName;
        UINumericControl* mpField;
        u32 mModifier;
        int mDrag;        // pixels down; up raises the value
        double mExpected; // while dragged and after the release
        double mBack;     // one pixel below the press: a step back from the start
    } const cases[] = {
        {"Shift: one per pixel, up raises", whole, kUsageLeftShift, -7, 107, 99},
        {"Shift down lowers", whole, kUsageLeftShift, 5, 102, 106},
        {"plain: 9 pixels do nothing to an integer", whole, 0, -9, 102, 102},
        {"plain: 10 pixels make one step", whole, 0, -10, 103, 102},
        {"plain: 25 pixels make two", whole, 0, 25, 101, 103},
        {"Control: a hundredth per pixel", fraction, kUsageLeftControl, 30, 0.7, 0.99},
        {"plain on a float: a tenth per pixel", fraction, 0, 10, -0.3, 0.6},
    };
    for (sCase const& c : cases) {
        auto value = [&]() { return (c.mpField == whole) ? static_cast<double>(integer) : static_cast<double>(real); };
        sRect const r = c.mpField->getSlideButton()->getAbsRegion();
        int const x = (r.left + r.right) / 2;
        int const y = (r.top + r.bottom) / 2;
        if (c.mModifier != 0) {
            key(c.mModifier, true);
        }
        advance(1000);
        press(x, y);
        frame();
        EXPECT_TRUE(c.mpField->isEditing()) << c.mName;
        move(x, y + c.mDrag);
        frame();
        EXPECT_NEAR(value(), c.mExpected, 1e-4) << c.mName;
        // Each move starts anew from the value at the press.
        move(x, y + 1);
        frame();
        EXPECT_NEAR(value(), c.mBack, 1e-4) << c.mName;
        move(x, y + c.mDrag);
        frame();
        release(x, y + c.mDrag);
        frame();
        if (c.mModifier != 0) {
            key(c.mModifier, false);
            frame();
        }
        EXPECT_NEAR(value(), c.mExpected, 1e-4) << c.mName << ": the release keeps the value";
        EXPECT_FALSE(c.mpField->isEditing()) << c.mName;
    }
}

TEST_F(ControlTest, AFormOfEveryValueTypeEditsEachValueThroughWidgetsAndKeepsItThroughTheSettingsFile)
{
    Everything object;
    UIWindow* window = openForm();
    List<UIBase> widgets;
    object.makeUIList(widgets);
    // Every control but the const string and object kinds has a widget; the
    // object has none of those, so one widget per control.
    ASSERT_EQ(widgets.size(), 23u);
    std::vector<UIBase*> w;
    for (List<UIBase>::Iterator it = widgets.begin(); it != widgets.end(); ++it) {
        w.push_back(*it);
        window->addClient(*it);
    }
    frame();
    frame();
    auto valueOf = [&](int i) { return static_cast<UIParameterControl*>(w[i])->getValueControl(); };
    auto fieldOf = [&](int i, unsigned int f) { return static_cast<UICompositeControl*>(w[i])->getField(f); };

    clickOn(w[0]); // the check box of "Bool"
    // Typed texts: the widget, its field (-1 the value of a parameter, -2 the
    // widget itself) and the text. "S16" is limited to -100 to 100.
    struct sEntry {
        int mWidget;
        int mField;
        char const* mText;
    } const entries[] = {
        {1, -1, "-5"},     {2, -1, "500"},   {3, -1, "123456"}, {4, -1, "-77"},  {5, -1, "200"},  {6, -1, "60000"},
        {7, -1, "70000"},  {8, -1, "88"},    {9, -1, "2.5"},    {10, -1, "0.25"}, {11, 0, "30"},   {11, 1, "40"},
        {12, 0, "-7"},     {12, 1, "9"},     {13, 0, "1"},      {13, 1, "2"},    {13, 2, "3"},    {13, 3, "4"},
        {14, 1, "200"},    {15, 3, "0.5"},   {16, 0, "5"},      {16, 1, "6"},    {17, -1, "1.5"}, {18, 0, "2.5"},
        {18, 1, "-1"},     {19, -2, "hello"},
    };
    for (sEntry const& e : entries) {
        SCOPED_TRACE(e.mWidget);
        enter(e.mField == -2 ? w[e.mWidget] : e.mField == -1 ? valueOf(e.mWidget) : fieldOf(e.mWidget, e.mField),
              e.mText);
    }
    // Colour: the slider's 64th pixel is 64 * 255 / 127 of red; ColorF's blue
    // slider at its left end is 0.
    clickOn(static_cast<UIColorControl*>(w[14])->getSlider(UIColorControl::eChannel_Red), 64);
    clickOn(static_cast<UIColorControl*>(w[15])->getSlider(UIColorControl::eChannel_Blue), 0);
    // The flag group: its second flag.
    UIFlagGroupControl* flags = static_cast<UIFlagGroupControl*>(w[20]);
    List<UIBase>::Iterator glow = flags->getForm()->getClientHolder()->getChildrenBegin();
    ++glow;
    clickOn(*glow);
    // The enumeration: open the list, pick its last row.
    UIEnumControl* mode = static_cast<UIEnumControl*>(w[21]);
    clickOn(mode, 8);
    ASSERT_TRUE(mode->getPulldownList()->isVisible());
    EXPECT_EQ(mpUI->getFocus(), mode->getPulldownList());
    sRect const list = mode->getPulldownList()->getAbsRegion();
    tap(list.left + 8, list.top + 1 + 2 * UIPulldownList::kRowHeight + 8);
    EXPECT_FALSE(mode->getPulldownList()->isVisible());
    // The trigger: its argument, then its button.
    UITriggerControl* trigger = static_cast<UITriggerControl*>(w[22]);
    enter(trigger->getField(), "3");
    clickOn(trigger->getButton());
    clickOn(trigger->getButton());

    // Every property by its text form, so that a failure names the field.
    std::string const edited = "Bool=true S8=-5 S16=100 S32=123456 S64=-77 U8=200 U16=60000 U32=70000 U64=88 "
                               "F32=2.500000 F64=0.250000 Size=(30,40) Point=(-7,9) Rect=(1,2,3,4) "
                               "Color=(128,200,0,0) ColorF=(1.000000,1.000000,0.000000,0.500000) Texcoord=(5,6) "
                               "Fixed=1.500000 Vector=(2.500000,-1.000000) Text=hello Flags=2 Mode=7 ";
    EXPECT_EQ(describe(object), edited);
    EXPECT_EQ(object.mAdded, 6);

    // Written and read back through the settings file.
    std::string const path = (std::filesystem::temp_directory_path() / "harbor_controls_test.xml").string();
    std::filesystem::remove(path);
    SettingsFile writer;
    writer.read(&object, "Everything", path.c_str());
    ASSERT_TRUE(writer.write(&object, "Everything", path.c_str()));
    Everything loaded;
    SettingsFile().read(&loaded, "Everything", path.c_str());
    std::filesystem::remove(path);
    // A saved bool comes back inverted: the text form reads "true" as false,
    // on purpose, and the files carry it.
    EXPECT_EQ(describe(loaded), "Bool=false" + edited.substr(9));
}

TEST_F(ControlTest, ArraysShowOneCaptionedFieldPerElementAndTheFactoryOffersNoWidgetForConstStringsOrObjects)
{
    u32 values[3] = {1, 2, 3};
    UIWindow* window = openForm();
    UIBase* array = place(window, makeControlArrayUI(new ReferenceProperty<u32>("Values", values, 3)));
    UIControlArray* controls = static_cast<UIControlArray*>(array);
    ASSERT_EQ(controls->getForm()->getClientHolder()->getChildCount(), 3u);
    List<UIBase>::Iterator it = controls->getForm()->getClientHolder()->getChildrenBegin();
    ++it;
    ++it;
    UIParameterControl* third = static_cast<UIParameterControl*>(*it);
    EXPECT_STREQ(third->getName().c_str(), "[2]");
    EXPECT_EQ(third->getCaptionWidth(), 6u * (3 + 1)) << "the caption is the index, beside the value";
    enter(third->getValueControl(), "30");
    EXPECT_EQ(values[2], 30u);
    EXPECT_EQ(values[0], 1u);

    char const* text = "fixed";
    ObjectBase* nothing = nullptr;
    PropertyControl constant(new ReferenceProperty<char const*>("c", &text));
    PropertyControl object(new ObjectProperty("o", &nothing, false));
    EXPECT_EQ(Utils::makeUIFromControl(&constant), nullptr);
    EXPECT_EQ(Utils::makeUIFromControl(&object), nullptr);
}

// The job system's widget edits its thread count within 1 to 16.
TEST_F(ControlTest, TheJobSystemsWidgetKeepsTheThreadCountInRange)
{
    UIWindow* window = openForm();
    List<UIBase> jobs;
    JobSystem::getInstance()->makeUIList(jobs);
    UIParameterControl* threads = place(window, static_cast<UIParameterControl*>(*jobs.begin()));
    enter(threads->getValueControl(), "99");
    EXPECT_EQ(JobSystem::getInstance()->getJobThreadNum(), 16u);
    enter(threads->getValueControl(), "0");
    EXPECT_EQ(JobSystem::getInstance()->getJobThreadNum(), 1u);
}

TEST_F(ControlTest, AResourceFieldOffersTheFiltersOfItsClassAndAWrongControlForAPropertyIsFatal)
{
    // A native class lists its own filter, then its intermediate classes';
    // ".." opens the file dialog over them, and ESC leaves the property be.
    ResourceBase* nothing = nullptr;
    UIWindow* window = openForm();
    PropertyBase* picture = new ResourceProperty("Picture", TextureResource::getStaticTypeInfo(), &nothing);
    UIResourceControl* field = place(window, new UIResourceControl(picture, false, UIControl::NoIndex));
    field->setDefaultSize();
    frame();
    // ".." stands at the right end of the row under the name.
    sRect const area = field->getAbsRegion();
    tap(area.right - UIResourceControl::kButtonWidth / 2, area.top + UIControl::kNameHeight + 8);
    frame();
    char const* const expected[] = {"tex|Texture", "tga|Targa", "bmp|Bitmap", nullptr};
    for (int i = 0; i < 4; ++i) {
        ASSERT_STREQ(field->getFilters()[i], expected[i]) << i;
    }
    UIWindow* dialog = mpUI->getActiveWindow();
    ASSERT_NE(dialog, window);
    EXPECT_STREQ(dialog->getTitle().c_str(), "Resource open");
    EXPECT_EQ(static_cast<UIFileDialog*>(dialog)->getFilterCount(), 3u);
    type(kUsageEscape);
    frame();
    EXPECT_EQ(mpUI->getActiveWindow(), window);
    EXPECT_EQ(nothing, nullptr);

    // Each wrong pairing of control and property stops with its message.
    static s32 number = 0;
    static float real = 0.0f;
    static sPoint point(0, 0);
    static ResourceBase* resource = nullptr;
    static sMaskInfo const masks[] = {{"A", 1}};
    static sEnumInfo const enums[] = {{"A", 0}};
    struct sCase {
        char const* mMessage;
        void (*mpMake)();
    } const cases[] = {
        {"Invalid property type.",
         [] { new UINumericControl(new ReferenceProperty<sPoint>("p", &point), false, UIControl::NoIndex,
                                   UIControl::eMode_Decimal); }},
        {"Property type missmatch.",
         [] { new UIFlagGroupControl(new ReferenceProperty<sPoint>("p", &point), masks, 1, false, UIControl::NoIndex); }},
        {"Property type missmatch.",
         [] { new UIEnumControl(new ReferenceProperty<sPoint>("p", &point), enums, 1, false, UIControl::NoIndex); }},
        {"Nameless property.",
         [] {
             uNumeric low;
             uNumeric high;
             UINumericControl::getTypeRange(ePropertyType_S32, low, high);
             new UIParameterControl(new ReferenceProperty<s32>(nullptr, &number), low, high, false, UIControl::NoIndex,
                                    UIControl::eMode_Decimal);
         }},
        {"Not TextureResource.",
         [] { new UITextureResourceControl(new ResourceProperty("r", ResourceBase::getStaticTypeInfo(), &resource),
                                           false, UIControl::NoIndex); }},
        {"Not Texture.", [] { new UITextureControl(new ReferenceProperty<float>("f", &real), UIControl::NoIndex); }},
        {"Invalid TypoInfo.",
         [] {
             UIResourceControl* abstract = new UIResourceControl(
                 new ResourceProperty("r", ResourceBase::getStaticTypeInfo(), &resource), false, UIControl::NoIndex);
             abstract->openFile();
         }},
    };
    for (sCase const& c : cases) {
        EXPECT_DEATH(c.mpMake(), c.mMessage) << c.mMessage;
    }
}
