#include "platforms/linux/x11/hit_test.h"

#include <algorithm>
#include <set>

#include "platforms/linux/x11/client_processes.h"

namespace pellow {

namespace {

using Windows = std::vector<xcb_window_t>;
using Clients = std::set<xcb_window_t>;

// The windows under a point, from the child of the root inwards.
std::expected<Windows, AXError> windowsUnder(X11Server& server, PixelPoint point,
                                             const Clients& clients, Deadline deadline) {
  auto& connection = server.connection();
  Windows chain;
  for (auto window = connection.root(); !clients.contains(window);) {
    auto pending = connection.pending<xcb_translate_coordinates_reply_t>(xcb_translate_coordinates(
        connection.raw(), connection.root(), window, static_cast<std::int16_t>(point.x),
        static_cast<std::int16_t>(point.y)));
    const auto inside = pending.collect(deadline);
    if (!inside) return std::unexpected(inside.error());
    window = (*inside)->child;
    if (window == XCB_WINDOW_NONE) break;
    chain.push_back(window);
  }
  return chain;
}

Windows childrenOfAll(X11Connection& connection, const Windows& parents, Deadline deadline) {
  std::vector<PendingReply<xcb_query_tree_reply_t>> pending;
  pending.reserve(parents.size());
  for (const auto parent : parents)
    pending.push_back(
        connection.pending<xcb_query_tree_reply_t>(xcb_query_tree(connection.raw(), parent)));
  Windows children;
  for (auto& each : pending) {
    const auto tree = each.collect(deadline);
    if (!tree) continue;
    const auto* first = xcb_query_tree_children(tree->get());
    children.insert(children.end(), first, first + xcb_query_tree_children_length(tree->get()));
  }
  return children;
}

// The client in a frame: its child, or that of a window in between.
std::optional<xcb_window_t> clientIn(X11Server& server, xcb_window_t frame, const Clients& clients,
                                     Deadline deadline) {
  constexpr int deepest = 3;
  Windows level{frame};
  for (int depth = 0; depth < deepest && !level.empty(); ++depth) {
    level = childrenOfAll(server.connection(), level, deadline);
    const auto found =
        std::ranges::find_if(level, [&](xcb_window_t window) { return clients.contains(window); });
    if (found != level.end()) return *found;
  }
  return std::nullopt;
}

bool isWithin(const PixelRect& rect, PixelPoint point) {
  return point.x >= rect.x && point.x < rect.maxX() && point.y >= rect.y && point.y < rect.maxY();
}

}  // namespace

std::expected<std::optional<Hit>, AXError> hitTest(X11Server& server, TitleBars& titleBars,
                                                   PixelPoint point, Deadline deadline) {
  const auto list = clientList(server, server.atoms().netClientList, deadline);
  const Clients clients(list.begin(), list.end());
  const auto chain = windowsUnder(server, point, clients, deadline);
  if (!chain) return std::unexpected(chain.error());
  if (chain->empty()) return std::nullopt;
  const bool isInside = clients.contains(chain->back());
  const auto client =
      isInside ? chain->back() : clientIn(server, chain->front(), clients, deadline);
  if (!client) return std::nullopt;

  auto found = lookAtAll(server, {*client}, Facet::state | Facet::frame | Facet::kind, deadline);
  giveIdentities(server, found, deadline);
  const ProcessID pid = owningProcesses(server, {*client}, deadline).front();
  if (found.empty() || pid == 0) return std::nullopt;
  Hit hit{.window = std::move(found.front()), .pid = pid};
  // A window with a frame has no title bar inside.
  const bool hasFrame = hit.window.outerCorner != hit.window.content.origin();
  if (isInside && hasFrame) return hit;
  const auto button = titleBars.minimizeButton(*client, deadline);
  hit.isMinimizeButton = button && isWithin(*button, point);
  return hit;
}

}  // namespace pellow
