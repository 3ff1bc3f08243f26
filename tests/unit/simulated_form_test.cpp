#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platforms/simulated/desktop.h"
#include "platforms/simulated/form_window.h"
#include "platforms/simulated/form_windows.h"

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
    window->present();
  }

  // Takes over what the user chose, and shows the form anew.
  auto change(auto& setting, const char* what) {
    return [&setting, what, this](const auto& to) {
      setting = to;
      did(fmt::format("{} {}", what, to));
    };
  }
  void did(std::string what) {
    done.push_back(std::move(what));
    window->setForm(form());
  }

  Form form() {
    const PopUpButton scopes{{"Window", "App"}, scope, change(scope, "scope")};
    const CheckBox previews{"Show a preview", hasPreview, change(hasPreview, "preview")};
    const Slider sizes{
        .minimum = 20, .maximum = 72, .value = size, .onChanged = change(size, "size")};
    const TextField names{name, [this](const std::string& text) {
                            if (!text.empty()) name = text;
                            did("name " + text);
                          }};
    const PushButton remove{"Remove", [this] { did("remove"); }};
    return {
        {{"General",
          {{"scope-row", FormRow{{{"label", FormText{"Tabs represent"}}, {"scope", scopes}}}},
           {"preview", previews},
           {"size", FormRow{{{"size-label", FormText{"Size"}}, {"slider", sizes}}}, hasPreview}}},
         {"Zones",
          {{"name-1", names}, {"name-2", names}, {"one", remove, false}, {"two", remove}}}}};
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

  simulated::Desktop desktop;
  simulated::Window list =
      desktop.launch("Notes", "com.example.notes").openWindow("Shopping", {100, 100, 800, 600});
  std::unique_ptr<pellow::FormWindow> window =
      desktop.formWindows().makeWindow("pellow-settings", "Pellow Settings");
  simulated::FormWindow& settings = desktop.formWindows().window("pellow-settings");
};

TEST_F(SimulatedFormTest, EveryControlTellsWhatTheUserDid) {
  EXPECT_EQ(settings.lines(), (Lines{"Tabs represent  Window ▾", "☐ Show a preview",
                                     "Size  slider 40 [20, 72] (disabled)"}));
  // By the text before it, by its title, by its key.
  EXPECT_EQ(doneAfter([&] { settings.choose("Tabs represent", "App"); }), Lines{"scope 1"});
  EXPECT_THROW(settings.drag("Size", 50), std::out_of_range) << "its row is disabled";
  EXPECT_EQ(doneAfter([&] { settings.toggle("Show a preview"); }), Lines{"preview true"});
  EXPECT_EQ(doneAfter([&] { settings.drag("Size", 50); }), (Lines{"size 45", "size 50"}));
  EXPECT_THROW(settings.press("two"), std::out_of_range) << "on the other pane";
  settings.selectPane("Zones");
  EXPECT_THROW(settings.press("Remove"), std::out_of_range) << "there are two";
  EXPECT_THROW(settings.press("one"), std::out_of_range) << "disabled";
  EXPECT_EQ(doneAfter([&] { settings.press("two"); }), Lines{"remove"});
  EXPECT_EQ(settings.selectedPane(), "Zones") << "a new form keeps the pane";
}

TEST_F(SimulatedFormTest, ATextIsToldWhenItsEditEnds) {
  settings.selectPane("Zones");
  EXPECT_EQ(doneAfter([&] { settings.type("name-1", "Home"); }), Lines{});
  window->setForm(form());
  EXPECT_EQ(settings.textIn("name-1"), "Home") << "a new form does not end it";
  EXPECT_EQ(doneAfter([&] { settings.pressReturn(); }), Lines{"name Home"});

  settings.type("name-1", "");
  EXPECT_EQ(doneAfter([&] { settings.type("name-2", "Play"); }), Lines{"name "});
  EXPECT_EQ(settings.textIn("name-1"), "Home") << "the form's text again";
  EXPECT_EQ(doneAfter([&] { settings.selectPane("General"); }), Lines{"name Play"});
  settings.selectPane("Zones");
  settings.type("name-1", "Last");
  EXPECT_EQ(doneAfter([&] { settings.close(); }), (Lines{"name Last", "closed"}));
}

TEST_F(SimulatedFormTest, ADeedFindsTheElementAsItIsByThen) {
  hasPreview = true;
  window->setForm(form());
  EXPECT_EQ(doneAfter([&] {
              settings.toggle("preview");
              settings.drag("Size", 20);
            }),
            Lines{"preview false"})
      << "by then its row is disabled";
  EXPECT_EQ(doneAfter([&] {
              settings.toggle("preview");
              window->setForm({});
            }),
            Lines{});
}

TEST_F(SimulatedFormTest, TheWindowIsOneOfTheDesktopWhileItShows) {
  const auto shown = desktop.window("Pellow Settings");
  EXPECT_TRUE(shown.isInFront() && shown.hasFocus());
  // A click elsewhere takes the keyboard away, a click on a control brings it back.
  desktop.pointer().click(list.minimizeButton() + AppKitVector{40, 0});
  desktop.runUntilQuiet();
  EXPECT_TRUE(window->isVisible() && list.hasFocus());
  settings.toggle("preview");
  desktop.runUntilQuiet();
  EXPECT_TRUE(shown.hasFocus());
  EXPECT_EQ(doneAfter([&] { settings.close(); }), Lines{"closed"});
  EXPECT_FALSE(window->isVisible());
  EXPECT_TRUE(list.hasFocus());
}

}  // namespace
}  // namespace pellow::simulated
