#include "engine/snapshots.h"

#include <algorithm>
#include <utility>

#include "access/ax.h"

namespace pellow {
namespace {

constexpr Seconds snapshotFreshness = 30;
constexpr Seconds snapshotInterval = 4;
constexpr std::size_t snapshotsAtMost = 16;

}  // namespace

bool Snapshots::isEnabled() const {
  return around_.preferences.value(preference::useThumbnails) &&
         around_.screenCapture.preflightAccess();
}

Task<std::optional<Image>> Snapshots::snapshotIfEnabled(ProcessID pid, std::string title,
                                                        QuartzRect frame) {
  if (!around_.preferences.value(preference::useThumbnails)) co_return std::nullopt;
  if (!around_.screenCapture.preflightAccess()) {
    const bool warned = std::exchange(warnedAboutScreenRecording_, true);
    if (!warned && onScreenRecordingDenied) onScreenRecordingDenied();
    co_return std::nullopt;
  }
  auto image = co_await capture_.capture(pid, std::move(title), frame);
  if (image) co_return std::move(*image);
  around_.log.standard("No snapshot for this window, using its icon: {}", image.error().sentence);
  co_return std::nullopt;
}

Task<> Snapshots::cacheSnapshot(TargetWindow window) {
  if (!isEnabled() || wasTakenWithin(window.element, snapshotInterval)) co_return;
  auto state = co_await around_.axQueue.ax([&] { return window.state(AX::timeout::application); });
  if (state.isMinimized || !state.frame) co_return;
  auto image = co_await capture_.capture(window.pid, std::move(state.title), *state.frame);
  if (image) keep(window.element, std::move(*image));
}

Task<> Snapshots::cacheSnapshotOfFocusedWindow(ProcessID pid) {
  if (!isEnabled()) co_return;
  const auto window = co_await around_.axQueue.ax([&] {
    return AX::child(around_.accessibility.application(pid), AX::attribute::focusedWindow,
                     AX::timeout::application);
  });
  if (window) co_await cacheSnapshot({*window, pid});
}

std::optional<Image> Snapshots::cachedSnapshot(const AXElement& window) const {
  if (!wasTakenWithin(window, snapshotFreshness)) return std::nullopt;
  return find(window)->image;
}

bool Snapshots::wasTakenWithin(const AXElement& window, Seconds age) const {
  const auto* const snapshot = find(window);
  return snapshot && around_.clock.now() - snapshot->taken < age;
}

void Snapshots::keep(const AXElement& window, Image image) {
  std::erase_if(snapshots_, [&](const Snapshot& snapshot) { return snapshot.window == window; });
  snapshots_.push_back({window, std::move(image), around_.clock.now()});
  while (snapshots_.size() > snapshotsAtMost) snapshots_.pop_front();
}

const Snapshots::Snapshot* Snapshots::find(const AXElement& window) const {
  const auto found = std::ranges::find(snapshots_, window, &Snapshot::window);
  return found == snapshots_.end() ? nullptr : &*found;
}

}  // namespace pellow
