#include "platforms/linux/qt/qt_form_windows.h"

#include <fmt/format.h>

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QTabBar>
#include <QWindow>

#include "tests/linux/qt_desktop_test.h"

namespace pellow::desktop {
namespace {

class QtFormWindowsTest : public QtDesktopTest {
 protected:
  void SetUp() override {
    QtDesktopTest::SetUp();
    windows.emplace();
    window = windows->makeWindow("pellow-settings", "Settings of Pellow");
  }

  // Shows a form of one pane in front.
  void present(std::vector<FormElement> elements) {
    show(std::move(elements));
    window->present();
    ASSERT_TRUE(until([&] { return hasKeyboard(); }));
  }
  void show(std::vector<FormElement> elements) {
    window->setForm({{{"Pane", std::move(elements)}}});
  }

  bool hasKeyboard() { return isInFront("pellow-settings"); }

  // Window managers may hold back a click that gives a window the keyboard.
  void clickInto(QLineEdit* field) {
    click(middleOf(*field));
    ASSERT_TRUE(until([&] { return field->hasFocus(); }));
  }

  // The first visible one, from top to bottom.
  template <class Widget>
  Widget* find(const char* text = nullptr) {
    for (auto* const top : QApplication::topLevelWidgets())
      for (auto* const widget : top->findChildren<Widget*>())
        if (widget->isVisible() && !widget->isWindow() &&
            (!text || widget->property("text").toString() == text))
          return widget;
    return nullptr;
  }
  // openbox inspects every click and loses the second of two within a millisecond.
  void clickButton(const char* text) {
    struct Releases : QObject {
      int seen = 0;
      bool eventFilter(QObject* object, QEvent* event) override {
        seen += object->isWindowType() && event->type() == QEvent::MouseButtonRelease;
        return false;
      }
    } releases;
    auto* const button = find<QAbstractButton>(text);
    button->window()->windowHandle()->installEventFilter(&releases);
    click(placeOf(*button, {8, button->height() / 2}));
    EXPECT_TRUE(until([&] { return releases.seen > 0; })) << text;
  }

  std::optional<QtFormWindows> windows;
  std::unique_ptr<FormWindow> window;
};

FormElement text(std::string key, std::string words, FormTextStyle style = FormTextStyle::body) {
  return {std::move(key), FormText{std::move(words), style}};
}

TEST_F(QtFormWindowsTest, ATextFieldTellsOnceWhatWasTypedAndShowsTheFormAgain) {
  std::string name = "Main";
  std::function<std::vector<FormElement>()> form = [&] {
    FormElement field{"name", TextField{name, [&](const std::string& typed) {
                                          heard.push_back(typed);
                                          if (!typed.starts_with("keep")) return;
                                          name = typed;
                                          show(form());
                                        }}};
    field.width = 150;
    field.accessibleName = "Name";
    return std::vector<FormElement>{{"row", FormRow{{text("title", "Name"), field}}},
                                    {"button", PushButton{"Elsewhere", note("elsewhere")}}};
  };
  present(form());
  auto* const field = find<QLineEdit>();
  ASSERT_TRUE(field);
  EXPECT_EQ(field->width(), 150);
  EXPECT_EQ(field->accessibleName(), "Name");
  EXPECT_EQ(find<QLabel>()->buddy(), field);
  const auto enter = [&](const char* words) {
    desktop.type({key::control, 'a'});
    type(words);
    ASSERT_TRUE(until([&] { return field->text() == words; }));
  };

  clickInto(field);
  enter("no");
  desktop.type({key::returnKey});
  EXPECT_TRUE(hears({"no"}));
  EXPECT_EQ(field->text(), "Main") << "the form has not taken it";
  EXPECT_TRUE(field->hasFocus());

  // A new form does not disturb what is being typed.
  enter("keep");
  show(form());
  EXPECT_EQ(field->text(), "keep");
  type("er");
  ASSERT_TRUE(until([&] { return field->text() == "keeper"; }));
  clickButton("Elsewhere");
  EXPECT_TRUE(hears({"keeper", "elsewhere"}));
  EXPECT_EQ(field->text(), "keeper");

  clickInto(field);
  enter("gone");
  desktop.type({key::escape});
  EXPECT_TRUE(until([&] { return field->text() == "keeper"; }));
  enter("keep me");
  desktop.type({key::control, 'w'});
  EXPECT_TRUE(hears({"keep me"})) << "closing the window leaves the field";
  EXPECT_FALSE(window->isVisible());
}

TEST_F(QtFormWindowsTest, ADragOnASliderGoesOnWhileTheFormChangesAroundIt) {
  double value = 20;
  std::vector<double> values;
  std::function<std::vector<FormElement>()> form = [&] {
    FormElement slider{"slider", Slider{.minimum = 20,
                                        .maximum = 72,
                                        .value = value,
                                        .tickMarks = 12,
                                        .onChanged = [&](double changed) {
                                          values.push_back(value = changed);
                                          show(form());
                                        }}};
    slider.width = 200;
    std::vector<FormElement> elements{
        {"row", FormRow{{text("title", "Size"), slider}}},
        text("note", fmt::format("{:.0f} pt", value), FormTextStyle::secondary)};
    // The element before it comes and goes.
    if (values.size() % 2 == 1) elements.insert(elements.begin(), text("odd", "Odd"));
    return elements;
  };
  present(form());
  auto* const slider = find<QSlider>();
  ASSERT_TRUE(slider);
  ASSERT_EQ(slider->width(), 200);
  EXPECT_EQ(slider->maximum() / slider->tickInterval(), 11);

  const auto from = placeOf(*slider, {8, slider->height() / 2});
  desktop.movePointer(from.x(), from.y());
  desktop.press();
  for (const int to : {50, 100, 150}) {
    const auto heardOf = values.size();
    desktop.movePointer(from.x() + to, from.y());
    ASSERT_TRUE(until([&] { return values.size() > heardOf; })) << to;
    EXPECT_NEAR(value, 20 + 52 * to / 184.0, 3);
    EXPECT_EQ(find<QSlider>(), slider);
    EXPECT_TRUE(slider->isSliderDown());
    EXPECT_TRUE(find<QLabel>(fmt::format("{:.0f} pt", value).c_str()));
  }
  desktop.movePointer(from.x() + 900, from.y() + 200);
  ASSERT_TRUE(until([&] { return value == 72; }));
  desktop.release();
  ASSERT_TRUE(until([&] { return !slider->isSliderDown(); }));
  EXPECT_TRUE(std::ranges::is_sorted(values));

  click(placeOf(*slider, {100, slider->height() / 2}));
  ASSERT_TRUE(until([&] { return value < 72; }));
  EXPECT_NEAR(value, 46, 2) << "a press takes the knob below the pointer";
}

TEST_F(QtFormWindowsTest, ControlsTellWhatTheUserDoesAndShowWhatTheFormSays) {
  std::optional<std::size_t> chosen;
  const auto form = [&] {
    return std::vector<FormElement>{
        {"check",
         CheckBox{"Save & close", false, [&](bool on) { heard.push_back(on ? "on" : "off"); }}},
        {"pop-up",
         PopUpButton{{"Left", "Right", "Top"},
                     chosen,
                     [&](std::size_t index) { heard.push_back(fmt::format("item {}", index)); }}},
        {"radio", RadioButton{"Default", chosen == 1, note("radio")}},
        {"off", PushButton{"Disabled", note("disabled")}, false}};
  };
  present(form());
  auto* const popUp = find<QComboBox>();
  EXPECT_EQ(popUp->currentIndex(), -1);
  clickButton("Disabled");
  clickButton("Save && close");
  EXPECT_TRUE(hears({"on"}));

  click(middleOf(*popUp));
  ASSERT_TRUE(until([&] { return QApplication::activePopupWidget() != nullptr; }));
  show(form());  // the open one stays open
  ASSERT_TRUE(QApplication::activePopupWidget());
  type("r");
  desktop.type({key::returnKey});
  EXPECT_TRUE(hears({"item 1"}));
  chosen = 1;
  show(form());
  EXPECT_EQ(popUp->currentIndex(), 1);
  auto* const radio = find<QAbstractButton>("Default");
  EXPECT_TRUE(radio->isChecked());
  clickButton("Default");
  EXPECT_TRUE(hears({"radio"}));
  EXPECT_TRUE(radio->isChecked()) << "a radio button does not go off by a click";
}

TEST_F(QtFormWindowsTest, WhatAControlDoesMayTakeItAwayAndTheWindowToo) {
  std::function<std::vector<FormElement>(bool)> form = [&](bool both) {
    std::vector<FormElement> elements;
    if (both)
      elements.push_back({"field", TextField{"", [&](const std::string& typed) {
                                               heard.push_back(typed);
                                               show(form(false));
                                             }}});
    elements.push_back({"end", PushButton{"End", [&] {
                                            heard.push_back("end");
                                            window.reset();
                                          }}});
    return elements;
  };
  present(form(true));
  clickInto(find<QLineEdit>());
  type("a");
  desktop.type({key::returnKey});
  EXPECT_TRUE(hears({"a"}));
  EXPECT_FALSE(find<QLineEdit>());
  show(form(true));
  work();

  // A field removed together with its text reports nothing.
  clickInto(find<QLineEdit>());
  type("b");
  ASSERT_TRUE(until([&] { return find<QLineEdit>()->text() == "b"; }));
  show(form(false));
  ASSERT_TRUE(until([&] { return find<QAbstractButton>("End")->y() < 60; }));
  clickButton("End");
  EXPECT_TRUE(hears({"end"}));
  EXPECT_TRUE(until([&] { return shown("pellow-settings") == 0; }));
}

TEST_F(QtFormWindowsTest, TheTabKeyGoesThroughControlsAsTheyAreRead) {
  const auto row = [](std::string key) {
    FormElement field{key + "field", TextField{}};
    field.accessibleName = key;
    FormElement box{key + "box", CheckBox{key + " box"}};
    return FormElement{key, FormRow{{std::move(field), std::move(box)}}};
  };
  const auto form = [&](std::vector<std::string> rows) {
    std::vector<FormElement> elements{{"first", CheckBox{"First"}}};
    for (const auto& key : rows) elements.push_back(row(key));
    elements.push_back({"last", PushButton{"Last"}});
    return elements;
  };
  present(form({"a", "c"}));
  show(form({"b", "a", "c", "d"}));
  std::vector<std::string> order;
  for (int presses = 0; presses < 11; ++presses) {
    auto* const before = QApplication::focusWidget();
    ASSERT_TRUE(before);
    order.push_back(
        QAccessible::queryAccessibleInterface(before)->text(QAccessible::Name).toStdString());
    desktop.type({key::tab});
    ASSERT_TRUE(until([&] { return QApplication::focusWidget() != before; })) << order.back();
  }
  EXPECT_EQ(order, (std::vector<std::string>{"Pane", "First", "b", "b box", "a", "a box", "c",
                                             "c box", "d", "d box", "Last"}));
  EXPECT_TRUE(dynamic_cast<QTabBar*>(QApplication::focusWidget())) << "and round";
}

TEST_F(QtFormWindowsTest, TheWindowIsAnOrdinaryOne) {
  std::string words = "mmmmmmmmmmmmmmmmmmmm";
  for (int i = 0; i < 15; ++i) words += " word";
  const Form form{{{"General", {text("t", "Section", FormTextStyle::section)}},
                   {"Long", {text("long", words)}},
                   {"Third", {}}}};
  window->setForm(form);
  window->present();
  ASSERT_TRUE(until([&] { return hasKeyboard(); }));
  const auto id = shown("pellow-settings");
  EXPECT_EQ(desktop.bytes(id, "WM_CLASS"), std::string("pellow-settings\0pellow\0", 23));
  EXPECT_EQ(desktop.bytes(id, "_NET_WM_NAME"), "Settings of Pellow");
  EXPECT_GT(desktop.frame(id).height, desktop.content(id).height) << "it is decorated";

  auto* const tabs = find<QTabBar>();
  click(placeOf(*tabs, tabs->tabRect(1).center()));
  ASSERT_TRUE(until([&] { return tabs->currentIndex() == 1; }));
  auto* const label = find<QLabel>();
  EXPECT_LE(label->width(), 420);
  EXPECT_GE(label->height(), 2 * label->fontMetrics().height());
  EXPECT_EQ(label->height(), label->heightForWidth(label->width())) << "nothing is cut off";
  window->setForm(form);
  EXPECT_EQ(tabs->currentIndex(), 1);
  window->setForm({{form.panes[0]}});
  EXPECT_EQ(tabs->count(), 1);
  window->setForm(form);

  window->onClosed = note("closed");
  desktop.type({key::alt, key::f4});
  EXPECT_TRUE(hears({"closed"}));
}

}  // namespace
}  // namespace pellow::desktop
