#include "tests/harness/test_client.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tests/harness/eventually.h"
#include "tests/harness/window_manager_choice.h"

namespace pellow::desktop {
TestClient::TestClient(DesktopSession& desktop, std::string windowClass)
    : desktop_(desktop),
      windowClass_(std::move(windowClass)),
      process_(desktop.start({PELLOW_TEST_CLIENT, windowClass_})) {}

void TestClient::grabServer(int milliseconds) {
  tell("grab", milliseconds);
  awaitAnswer("grabbed");
}

WindowID TestClient::shown(WindowID window) {
  if (!desktop_.activate(window))
    throw std::runtime_error("the window manager does not show a new window");
  if (!chosenManager().composites) return window;
  // mutter paints a window for good as it was in the middle of its first animation, if the next one
  // comes before the end.
  const bool isPainted = eventually(
      [&] { return desktop_.picture(desktop_.content(window)).count(colourOf(window)) > 0; });
  if (!isPainted) throw std::runtime_error("the window manager does not paint a new window");
  return window;
}

WindowID TestClient::awaitWindow() {
  const auto window = static_cast<WindowID>(std::stoul(awaitAnswer("window ")));
  const bool managed = eventually([&] {
    const auto clients = desktop_.clients();
    return std::ranges::find(clients, window) != clients.end();
  });
  if (!managed) throw std::runtime_error("the window manager does not manage a new window");
  return window;
}

std::string TestClient::awaitAnswer(std::string_view beginning) {
  while (const auto answer = process_->readLine())
    if (answer->starts_with(beginning)) return answer->substr(beginning.size());
  throw std::runtime_error("the test client does not answer");
}

}  // namespace pellow::desktop
