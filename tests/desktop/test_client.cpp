#include "tests/desktop/test_client.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tests/desktop/eventually.h"

namespace pellow::desktop {
namespace {

std::string describe(PixelRect place, std::string_view title) {
  std::ostringstream text;
  text << place.x << ' ' << place.y << ' ' << place.width << ' ' << place.height << ' ' << title;
  return text.str();
}

}  // namespace

TestClient::TestClient(DesktopSession& desktop, std::string windowClass)
    : desktop_(desktop),
      windowClass_(std::move(windowClass)),
      process_(desktop.start({PELLOW_TEST_CLIENT, windowClass_})) {}

WindowID TestClient::open(std::string_view title, PixelRect place) {
  return open("new " + describe(place, title));
}

WindowID TestClient::openDialog(std::string_view title, PixelRect place, WindowID owner) {
  return open("dialog " + std::to_string(owner) + " " + describe(place, title));
}

WindowID TestClient::openUndecorated(std::string_view title, PixelRect place) {
  return open("bare " + describe(place, title));
}

WindowID TestClient::openWithShadow(std::string_view title, PixelRect place) {
  return open("shadowed " + describe(place, title));
}

WindowID TestClient::openAnonymous(std::string_view title, PixelRect place) {
  return open("anonymous " + describe(place, title));
}

WindowID TestClient::openTyped(std::string_view type, std::string_view title, PixelRect place) {
  return openManaged("typed " + std::string(type) + " " + describe(place, title));
}

WindowID TestClient::openSkippingTaskbar(std::string_view title, PixelRect place) {
  return openManaged("skipping " + describe(place, title));
}

WindowID TestClient::openDock(PixelRect place, std::string_view side) {
  return openManaged("dock " + std::string(side) + " " + describe(place, "Dock"));
}

void TestClient::keepSide(WindowID dock, std::string_view side, int depth) {
  tell("strut " + std::to_string(dock) + " " + std::string(side) + " " + std::to_string(depth));
}

void TestClient::setTitle(WindowID window, std::string_view title) {
  tell("title " + std::to_string(window) + " " + std::string(title));
}

void TestClient::maximize(WindowID window) {
  tell("state " + std::to_string(window) +
       " _NET_WM_STATE_MAXIMIZED_HORZ _NET_WM_STATE_MAXIMIZED_VERT");
}

void TestClient::maximizeVertically(WindowID window) {
  tell("state " + std::to_string(window) + " _NET_WM_STATE_MAXIMIZED_VERT");
}

void TestClient::makeFullScreen(WindowID window) {
  tell("state " + std::to_string(window) + " _NET_WM_STATE_FULLSCREEN");
}

void TestClient::map(WindowID window) { tell("map " + std::to_string(window)); }

void TestClient::destroy(WindowID window) { tell("destroy " + std::to_string(window)); }

void TestClient::reconnect() { tell("reconnect"); }

void TestClient::grabServer(int milliseconds) {
  tell("grab " + std::to_string(milliseconds));
  awaitAnswer("grabbed");
}

void TestClient::storm(int rounds) { tell("storm " + std::to_string(rounds)); }

void TestClient::awaitCalm() { awaitAnswer("calm"); }

WindowID TestClient::open(const std::string& command) {
  const auto window = openManaged(command);
  if (!desktop_.activate(window))
    throw std::runtime_error("the window manager does not show a new window");
  return window;
}

WindowID TestClient::openManaged(const std::string& command) {
  tell(command);
  const auto window = static_cast<WindowID>(std::stoul(awaitAnswer("window ")));
  const bool managed = eventually([&] {
    const auto clients = desktop_.clients();
    return std::ranges::find(clients, window) != clients.end();
  });
  if (!managed) throw std::runtime_error("the window manager does not manage a new window");
  return window;
}

void TestClient::tell(const std::string& command) { process_->writeLine(command); }

std::string TestClient::awaitAnswer(std::string_view beginning) {
  while (const auto answer = process_->readLine())
    if (answer->starts_with(beginning)) return answer->substr(beginning.size());
  throw std::runtime_error("the test client does not answer");
}

}  // namespace pellow::desktop
