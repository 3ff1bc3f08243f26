#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "access/ax.h"
#include "access/ax_queue.h"
#include "access/pellow_error.h"
#include "access/target_window.h"
#include "base/task.h"
#include "platforms/simulated/desktop.h"
#include "tests/unit/scripted_element.h"

namespace pellow {
namespace {

constexpr Seconds patience = 5;

TEST(AXReaders, AnswerNothingForErrorsAndForOtherTypes) {
  const auto scripted = scriptedElement(1);
  const AXElement element(scripted);
  const AXElement other(scriptedElement(2)), third(scriptedElement(3));
  scripted->answer("text", "hello");
  scripted->answer("yes", true);
  scripted->answer("element", other);
  scripted->answer("list", std::vector{other, third});
  scripted->answer("error", std::unexpected(AXError::cannotComplete));

  EXPECT_EQ(AX::string(element, "text", patience), "hello");
  EXPECT_EQ(AX::boolean(element, "yes", patience), true);
  EXPECT_EQ(AX::child(element, "element", patience), other);
  EXPECT_EQ(AX::children(element, "list", patience), (std::vector{other, third}));
  for (const auto attribute : {"error", "absent", "yes"}) {
    EXPECT_EQ(AX::string(element, attribute, patience), std::nullopt);
    EXPECT_EQ(AX::child(element, attribute, patience), std::nullopt);
    EXPECT_TRUE(AX::children(element, attribute, patience).empty());
  }
  EXPECT_EQ(AX::boolean(element, "text", patience), std::nullopt);
  EXPECT_EQ(AX::child(element, "list", patience), std::nullopt);

  // A frame needs position and size.
  scripted->answer("AXPosition", QuartzPoint{10, 20});
  EXPECT_EQ(AX::frame(element, patience), std::nullopt);
  scripted->answer("AXSize", Size{300, 200});
  EXPECT_EQ(AX::frame(element, patience), QuartzRect(10, 20, 300, 200));
}

// A window with a button `depth` levels below it; answers what the walk up from the button finds.
std::optional<AXElement> windowAbove(int depth) {
  auto parent = scriptedElement(0);
  parent->answer("AXRole", "AXWindow");
  for (int level = 1; level <= depth; ++level) {
    const auto element = scriptedElement(level);
    element->answer("AXRole", "AXGroup");
    element->answer("AXParent", AXElement(parent));
    parent = element;
  }
  return AX::enclosingWindow(AXElement(parent), patience);
}

TEST(AXReaders, TheEnclosingWindowIsAtMostSevenLevelsUp) {
  const AXElement window(scriptedElement(0));
  for (const int depth : {0, 1, 7}) EXPECT_EQ(windowAbove(depth), window);
  EXPECT_EQ(windowAbove(8), std::nullopt);

  const auto button = scriptedElement(1);
  EXPECT_EQ(AX::enclosingWindow(AXElement(button), patience), std::nullopt);
  button->answer("AXParent", AXElement(button));
  EXPECT_EQ(AX::enclosingWindow(AXElement(button), patience), std::nullopt) << "its own parent";
  button->attributes.clear();
}

TEST(TargetWindow, OnlyStandardWindowsThatTellTheirProcess) {
  ScriptedAccessibility accessibility;
  std::vector<AXElement> listed;
  const auto list = [&](int thing) {
    auto window = scriptedElement(thing);
    window->answer("AXSubrole", "AXStandardWindow");
    listed.emplace_back(window);
    return window;
  };
  list(1)->owner = 42;
  list(2)->answer("AXSubrole", "AXDialog");
  list(3)->answer("AXSubrole", std::unexpected(AXError::cannotComplete));
  list(4)->owner = std::unexpected(AXError::invalidUIElement);
  list(5)->owner = 43;
  EXPECT_TRUE(TargetWindow::windows(accessibility, 42).empty());

  accessibility.onlyApplication->answer("AXWindows", listed);
  const auto windows = TargetWindow::windows(accessibility, 42);
  ASSERT_EQ(windows.size(), 2u);
  EXPECT_EQ(windows[0].element, listed[0]);
  EXPECT_EQ(windows[0].pid, 42);
  EXPECT_EQ(windows[1].element, listed[4]);
  EXPECT_EQ(windows[1].pid, 43);
  EXPECT_EQ(accessibility.onlyApplication->lastTimeout, 0.25);
}

class TargetWindowMove : public testing::Test {
 protected:
  QuartzPoint move(QuartzPoint to, Verify verify = Verify::yes) {
    const auto before = clock.now();
    const TargetWindow target{AXElement(window), 1};
    const auto reached = target.move(to, verify, clock);
    took = clock.now() - before;
    return reached;
  }
  // One position per read; the last one repeats.
  void reports(std::vector<QuartzPoint> positions) {
    window->attributes["AXPosition"] = [this, positions]() -> ScriptedElement::Answer {
      return positions[std::min<std::size_t>(reads++, positions.size() - 1)];
    };
  }

  simulated::Desktop desktop;
  Clock& clock = desktop.clock();
  std::shared_ptr<ScriptedElement> window = scriptedElement(1);
  Seconds took = 0;
  std::size_t reads = 0;
};

TEST_F(TargetWindowMove, EndsAsSoonAsTheWindowIsCloseEnough) {
  reports({{501.5, 498.5}});
  EXPECT_EQ(move({500, 500}), (QuartzPoint{501.5, 498.5}));
  EXPECT_EQ(took, 0);
  EXPECT_EQ(window->lastTimeout, 5.0);
  ASSERT_EQ(window->writes.size(), 1u);
  EXPECT_EQ(window->writes[0],
            (std::pair<std::string, AXValue>("AXPosition", QuartzPoint{500, 500})));

  reads = 0;
  reports({{0, 0}, {300, 300}, {498, 502}});
  EXPECT_EQ(move({500, 500}), (QuartzPoint{498, 502}));
  EXPECT_NEAR(took, 0.04, 1e-9);
}

TEST_F(TargetWindowMove, AWindowThatStaysAwayIsNoErrorButTakesItsTime) {
  for (const QuartzPoint away : {QuartzPoint{503, 500}, {500, 497}}) {
    reads = 0;
    reports({away});
    EXPECT_EQ(move({500, 500}), away);
    EXPECT_GE(took, 0.6);
    EXPECT_LE(took, 0.6 + 0.02 + 1e-9);
  }
  reads = 0;
  EXPECT_EQ(move({500, 500}, Verify::no), (QuartzPoint{500, 500}));
  EXPECT_EQ(reads, 0u);
}

TEST_F(TargetWindowMove, FailsWithTheErrorOfTheWriteOrOfNoAnswer) {
  const auto failure = [this] {
    try {
      move({500, 500});
    } catch (const PellowError& thrown) {
      return thrown;
    }
    throw std::logic_error("the move did not fail");
  };
  const auto noAnswer = PellowError::moveFailed(AXError::cannotComplete);
  EXPECT_EQ(failure(), noAnswer) << "no position";
  window->answer("AXPosition", "nowhere");
  EXPECT_EQ(failure(), noAnswer);
  window->writeAnswer = std::unexpected(AXError::invalidUIElement);
  EXPECT_EQ(failure(), PellowError::moveFailed(AXError::invalidUIElement));
}

// The runner, on a desktop whose threads take turns by virtual time.
class AXQueueTest : public testing::Test {
 protected:
  simulated::Desktop desktop;
  AXQueue queue{desktop.queues(), "queue"};
  std::vector<std::string> story;
  TaskScope tasks{[this](std::exception_ptr error) {
    try {
      std::rethrow_exception(error);
    } catch (const PellowError& thrown) {
      story.push_back(thrown.errorDescription());
    }
  }};

  Task<> tell(std::string name, Seconds duration) {
    co_await queue.ax([&] {
      story.push_back(name + " begins");
      desktop.clock().sleep(duration);
      story.push_back(name + " ends");
    });
    story.push_back(name + " is back");
  }
  Task<> fail() {
    co_await queue.ax([] { throw PellowError::windowGone(); });
    story.push_back("not reached");
  }
  // Cancels all tasks after `delay`.
  void cancelAfter(Seconds delay) {
    cancelled = desktop.queues().main().after(delay, [this] {
      tasks.cancel();
      story.push_back("cancelled");
    });
    desktop.runUntilQuiet();
  }

 private:
  Subscription cancelled;
};

TEST_F(AXQueueTest, RunsOneAtATimeInOrderAndComesBack) {
  tasks.start(tell("one", 0.3));
  tasks.start(tell("two", 0.1));
  tasks.start(fail());
  EXPECT_TRUE(story.empty()) << "nothing has happened before the main thread lets go";
  desktop.runUntilQuiet();

  std::erase_if(story, [](const auto& line) { return line.ends_with("begins"); });
  const auto at = [&](std::string_view line) { return std::ranges::find(story, line); };
  EXPECT_LT(at("one ends"), at("two ends"));
  EXPECT_LT(at("one is back"), at("two is back"));
  EXPECT_EQ(story.back(), "That window no longer exists.");
  EXPECT_EQ(story.size(), 5u);
  EXPECT_TRUE(tasks.isIdle());
}

TEST_F(AXQueueTest, ADestroyedCoroutineWaitsForItsRunningWorkAndDropsTheRest) {
  tasks.start(tell("one", 0.3));
  tasks.start(tell("two", 0.1));
  cancelAfter(0.2);
  EXPECT_EQ(story, (std::vector<std::string>{"one begins", "one ends", "cancelled"}));
}

TEST_F(AXQueueTest, ADestroyedCoroutineIsNotResumedWhenItsWorkIsDone) {
  // The main thread is busy when the work ends, so the way back queues behind the cancel.
  tasks.start(tell("one", 0.1));
  const auto busy = desktop.queues().main().after(0.05, [this] {
    desktop.clock().sleep(0.2);
    tasks.cancel();
  });
  desktop.runUntilQuiet();
  EXPECT_EQ(story, (std::vector<std::string>{"one begins", "one ends"}));
}

}  // namespace
}  // namespace pellow
