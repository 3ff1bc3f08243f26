#include "platforms/simulated/announcements.h"

#include <algorithm>

namespace pellow::simulated {
namespace {

template <class Things, class Key>
auto find(const Things& things, Key key, Key Things::value_type::* member) {
  const auto found = std::ranges::lower_bound(things, key, {}, member);
  return found == things.end() || (*found).*member != key ? nullptr : &*found;
}

}  // namespace

Glance::Glance(const DesktopState& desktop) : frontmost_(desktop.frontmost) {
  windows_.reserve(desktop.windows.size());
  applications_.reserve(desktop.applications.size());
  for (const auto& each : desktop.windows) windows_.push_back({each.id, each.pid, each.minimized});
  for (const auto& each : desktop.applications)
    applications_.push_back({each.identity.pid,
                             each.identity.activationPolicy == ActivationPolicy::regular,
                             each.focusedWindow});
  std::ranges::sort(windows_, {}, &Window::id);
  std::ranges::sort(applications_, {}, &Application::pid);
}

std::vector<Announcement> Glance::announcementsSince(const Glance& before) const {
  using enum Announcement::Kind;
  std::vector<Announcement> news;
  for (const auto& each : applications_) {
    const auto* earlier = find(before.applications_, each.pid, &Application::pid);
    if (each.isRegular && !(earlier && earlier->isRegular))
      news.push_back({didBecomeRegular, each.pid});
  }

  for (const auto& each : windows_) {
    const auto* earlier = find(before.windows_, each.id, &Window::id);
    if (each.minimized && earlier && !earlier->minimized)
      news.push_back({windowMiniaturized, each.pid, each.id});
  }
  for (const auto& each : before.windows_)
    if (!find(windows_, each.id, &Window::id))
      news.push_back({elementDestroyed, each.pid, each.id});

  if (frontmost_ && frontmost_ != before.frontmost_) news.push_back({didActivate, *frontmost_});
  for (const auto& each : applications_) {
    const auto* earlier = find(before.applications_, each.pid, &Application::pid);
    if (each.focusedWindow && (!earlier || earlier->focusedWindow != each.focusedWindow))
      news.push_back({focusedWindowChanged, each.pid, *each.focusedWindow});
  }

  for (const auto& each : before.applications_)
    if (!find(applications_, each.pid, &Application::pid)) news.push_back({didTerminate, each.pid});
  return news;
}

}  // namespace pellow::simulated
