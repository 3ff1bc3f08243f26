#include "capture/window_capture.h"

#include <cmath>
#include <utility>
#include <vector>

#include "access/pellow_error.h"
#include "base/answer.h"
#include "capture/in_time.h"

namespace pellow {
namespace {

using Windows = std::expected<std::vector<ShareableWindow>, SystemError>;
using Picture = std::expected<Image, SystemError>;

constexpr double tolerance = 2.0;  // points
constexpr int titleAloneScore = 3;

bool isNear(double a, double b) { return std::abs(a - b) <= tolerance; }

std::unexpected<SystemError> failure(const PellowError& error) {
  return std::unexpected(SystemError{error.errorDescription()});
}

}  // namespace

int WindowCapture::score(const ShareableWindow& window, std::string_view title,
                         const QuartzRect& frame) {
  int score = 0;
  if (isNear(window.frame.minX(), frame.minX()) && isNear(window.frame.minY(), frame.minY()))
    score += 4;
  if (isNear(window.frame.width(), frame.width()) && isNear(window.frame.height(), frame.height()))
    score += 2;
  if (!title.empty() && window.title == title) score += 3;
  return score;
}

std::optional<ShareableWindow> WindowCapture::bestMatch(std::span<const ShareableWindow> windows,
                                                        std::string_view title,
                                                        const QuartzRect& frame) {
  const ShareableWindow* best = nullptr;
  int highest = titleAloneScore;
  for (const auto& window : windows) {
    const auto points = score(window, title, frame);
    if (points <= highest) continue;
    highest = points;
    best = &window;
  }
  return best ? std::optional(*best) : std::nullopt;
}

Task<std::expected<Image, SystemError>> WindowCapture::capture(ProcessID pid, std::string title,
                                                               QuartzRect frame) {
  if (!screenCapture_.preflightAccess())
    co_return failure(PellowError::screenRecordingDenied(texts_));
  auto windows = co_await Answer<Windows>(inTime<Windows>(mainQueue_, [this](auto onWindows) {
    return screenCapture_.shareableWindows(std::move(onWindows));
  }));
  if (!windows) co_return std::unexpected(windows.error());

  std::erase_if(*windows, [pid](const ShareableWindow& window) { return window.owner != pid; });
  const auto window = bestMatch(*windows, title, frame);
  if (!window) co_return failure(PellowError::captureFailed());
  co_return co_await Answer<Picture>(inTime<Picture>(mainQueue_, [this, &window](auto onImage) {
    return screenCapture_.captureImage(*window, static_cast<int>(window->frame.width()),
                                       static_cast<int>(window->frame.height()),
                                       std::move(onImage));
  }));
}

}  // namespace pellow
