#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/simulated_desktop.h"
#include "platforms/simulated/simulated_form_window.h"
#include "platforms/simulated/simulated_form_windows.h"
#include "platforms/simulated/simulated_platform.h"

// A settings window in the hands of its user.

namespace pellow::simulated {
namespace {

using Lines = std::vector<std::string>;

// The form of a program with a few settings, which it rebuilds after every change.
class SimulatedFormTest : public testing::Test {
 protected:
  SimulatedFormTest() {
    window->setForm(form());
    window->onClosed = [this] { done.push_back("closed"); };
  }

  Form form() {
    const auto did = [this](std::string what) {
      done.push_back(std::move(what));
      window->setForm(form());
    };
    const PopUpButton scopes{
        .titles = {"Window", "App"}, .selected = scope, .onChosen = [=, this](std::size_t index) {
          scope = index;
          did(fmt::format("scope {}", index));
        }};
    const CheckBox previews{
        .title = "Show a preview", .isOn = hasPreview, .onToggled = [=, this](bool on) {
          hasPreview = on;
          did(fmt::format("preview {}", on));
        }};
    const Slider sizes{
        .minimum = 20, .maximum = 72, .value = size, .onChanged = [=, this](double to) {
          size = to;
          did(fmt::format("size {:g}", to));
        }};
    const TextField names{.text = name, .onEnded = [=, this](const std::string& text) {
                            if (!text.empty()) name = text;
                            did("name " + text);
                          }};
    const RadioButton defaults{
        .title = "Default", .isOn = true, .onChosen = [=] { did("default"); }};
    const PushButton remove{.title = "Remove", .onClick = [=] { did("remove"); }};
    const auto row = [](std::string label, std::string key, FormContent content, bool enabled) {
      return FormElement{.key = key + "-row",
                         .content = FormRow{{{.key = key + "-label", .content = FormText{label}},
                                             {.key = key, .content = std::move(content)}}},
                         .isEnabled = enabled};
    };
    return {
        {{"General",
          {{.key = "title", .content = FormText{"Tabs", FormTextStyle::section}},
           row("Tabs represent", "scope", scopes, true),
           {.key = "preview", .content = previews},
           row("Size", "size", sizes, hasPreview),
           {.key = "granted", .content = FormStatus{"checkmark", "Granted"}}}},
         {"Zones",
          {{.key = "zone-1",
            .content = FormRow{{{.key = "zone-1/name", .content = names},
                                {.key = "zone-1/default", .content = defaults},
                                {.key = "zone-1/remove", .content = remove, .isEnabled = false}}}},
           {.key = "zone-2",
            .content = FormRow{{{.key = "zone-2/name", .content = names},
                                {.key = "zone-2/remove", .content = remove}}}}}}}};
  }

  Lines doneAfter(const std::function<void()>& act) {
    done.clear();
    act();
    EXPECT_EQ(done, Lines{}) << "the program heard of it outside of its main loop";
    desktop.runUntilQuiet();
    return done;
  }

  std::size_t scope = 0;
  bool hasPreview = false;
  double size = 40;
  std::string name = "Work";
  Lines done;

  SimulatedPlatform platform;
  SimulatedDesktop& desktop = platform.desktop();
  SimulatedApplication notes = desktop.launch("Notes", "com.example.notes");
  SimulatedWindow list = notes.openWindow("Shopping", {100, 100, 800, 600});
  std::unique_ptr<FormWindow> window =
      platform.formWindows().makeWindow("pellow-settings", "Pellow Settings");
  SimulatedFormWindow& settings = desktop.formWindow("pellow-settings");
};

TEST_F(SimulatedFormTest, EveryControlTellsWhatTheUserDid) {
  window->present();
  EXPECT_EQ(settings.lines(), (Lines{"Tabs", "Tabs represent  Window ▾", "☐ Show a preview",
                                     "Size  slider 40 [20, 72] (disabled)", "checkmark Granted"}));

  // By the text before it, by its title, by its key.
  EXPECT_EQ(doneAfter([&] { settings.choose("Tabs represent", "App"); }), Lines{"scope 1"});
  EXPECT_THROW(settings.drag("Size", 50), std::out_of_range) << "its row is disabled";
  EXPECT_EQ(doneAfter([&] { settings.toggle("Show a preview"); }), Lines{"preview true"});
  EXPECT_EQ(doneAfter([&] { settings.drag("Size", 50); }), (Lines{"size 45", "size 50"}));
  EXPECT_THROW(settings.press("Default"), std::out_of_range) << "on the other pane";
  settings.selectPane("Zones");
  EXPECT_EQ(doneAfter([&] { settings.press("Default"); }), Lines{"default"});
  EXPECT_EQ(settings.selectedPane(), "Zones") << "a new form keeps the pane";
  EXPECT_THROW(settings.press("Remove"), std::out_of_range) << "there are two";
  EXPECT_THROW(settings.press("zone-1/remove"), std::out_of_range) << "disabled";
  EXPECT_EQ(doneAfter([&] { settings.press("zone-2/remove"); }), Lines{"remove"});
}

TEST_F(SimulatedFormTest, ATextIsToldWhenItsEditEnds) {
  window->present();
  settings.selectPane("Zones");
  EXPECT_EQ(doneAfter([&] { settings.type("zone-1/name", "Home"); }), Lines{});
  window->setForm(form());
  EXPECT_EQ(settings.textIn("zone-1/name"), "Home") << "a new form does not end it";
  EXPECT_EQ(doneAfter([&] { settings.pressReturn(); }), Lines{"name Home"});

  settings.type("zone-1/name", "");
  EXPECT_EQ(doneAfter([&] { settings.type("zone-2/name", "Play"); }), Lines{"name "});
  EXPECT_EQ(settings.textIn("zone-1/name"), "Home") << "the form's text again";
  EXPECT_EQ(doneAfter([&] { settings.selectPane("General"); }), Lines{"name Play"});
  settings.selectPane("Zones");
  settings.type("zone-1/name", "Last");
  EXPECT_EQ(doneAfter([&] { settings.close(); }), (Lines{"name Last", "closed"}));
}

TEST_F(SimulatedFormTest, ADeedFindsTheElementAsItIsByThen) {
  window->present();
  // Both clicks came before the program could answer the first.
  EXPECT_EQ(doneAfter([&] {
              settings.toggle("preview");
              settings.toggle("preview");
            }),
            (Lines{"preview true", "preview false"}));
  // It is disabled, or gone, by the time the program hears of it.
  hasPreview = true;
  window->setForm(form());
  EXPECT_EQ(doneAfter([&] {
              settings.toggle("preview");
              settings.drag("Size", 20);
            }),
            Lines{"preview false"});
  EXPECT_EQ(doneAfter([&] {
              settings.toggle("preview");
              window->setForm({});
            }),
            Lines{});
  window->setForm(
      {{{"Last", {{.key = "end", .content = PushButton{"End", [&] { window.reset(); }}}}}}});
  settings.press("End");
  settings.press("End");
  desktop.runUntilQuiet();
  EXPECT_THROW(desktop.formWindow("pellow-settings"), std::out_of_range);
}

TEST_F(SimulatedFormTest, TheWindowIsOneOfTheDesktopWhileItShows) {
  EXPECT_FALSE(window->isVisible());

  std::string keys;
  const auto local = platform.eventMonitors().addLocalKeyDown([&](const KeyEvent&) {
    keys += "program ";
    return true;
  });
  const auto global =
      platform.eventMonitors().addGlobalKeyDown([&](const KeyEvent&) { keys += "others "; });
  const auto press = [&] {
    desktop.press(17);
    desktop.runUntilQuiet();
  };
  press();
  window->present();
  press();
  EXPECT_TRUE(window->isVisible());
  const auto shown = desktop.window("Pellow Settings");
  EXPECT_TRUE(shown.isInFront());

  // A click elsewhere takes the keyboard away, a click on a control brings it back.
  desktop.click(list.minimizeButton() + AppKitVector{40, 0});
  press();
  EXPECT_TRUE(window->isVisible());
  settings.toggle("preview");
  press();
  EXPECT_TRUE(shown.hasFocus());
  EXPECT_EQ(doneAfter([&] { settings.close(); }), Lines{"closed"});
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(list.hasFocus());
  press();
  EXPECT_EQ(keys, "others program others program others ");

  // Somebody else closes it.
  window->present();
  EXPECT_EQ(doneAfter([&] { desktop.window("Pellow Settings").close(); }), Lines{"closed"});

  // With the window the program gives way, too.
  window->present();
  window.reset();
  EXPECT_TRUE(list.hasFocus());
}

}  // namespace
}  // namespace pellow::simulated
