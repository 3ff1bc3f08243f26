#include "platforms/linux/qt/appearance_portal.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <algorithm>
#include <array>
#include <utility>

namespace pellow {
namespace {

constexpr auto portal = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto settings = "org.freedesktop.portal.Settings";
constexpr auto appearance = "org.freedesktop.appearance";

// Portals wrap the value once too often.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value;
}

std::optional<bool> darkness(const QVariant& colourScheme) {
  constexpr unsigned prefersDark = 1;
  constexpr unsigned prefersLight = 2;
  const auto told = colourScheme.toUInt();
  if (told != prefersDark && told != prefersLight) return std::nullopt;
  return told == prefersDark;
}

// Red, green and blue; beyond 0..1 if the user has chosen none.
std::optional<QColor> colour(const QVariant& accent) {
  if (!accent.canConvert<QDBusArgument>()) return std::nullopt;
  const auto parts = accent.value<QDBusArgument>();
  if (parts.currentSignature() != "(ddd)") return std::nullopt;
  std::array<double, 3> rgb{};
  parts.beginStructure();
  for (auto& part : rgb) parts >> part;
  parts.endStructure();
  const auto isShare = [](double part) { return part >= 0 && part <= 1; };
  if (!std::ranges::all_of(rgb, isShare)) return std::nullopt;
  return QColor::fromRgbF(static_cast<float>(rgb[0]), static_cast<float>(rgb[1]),
                          static_cast<float>(rgb[2]));
}

}  // namespace

// By then Qt has connected to the bus for assistive programs.
AppearancePortal::AppearancePortal(std::function<void()> onChange)
    : onChange_(std::move(onChange)) {
  news_.setSingleShot(true);
  QObject::connect(&news_, &QTimer::timeout, &news_, [this] { ask(); });
  QTimer::singleShot(0, &news_, [this] { follow(); });
}

// With a name of its sender, Qt would first wait for the bus to tell who that is.
void AppearancePortal::follow() {
  auto bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect({}, path, settings, "SettingChanged", {appearance}, {}, &news_, SLOT(start()));
  coming_.emplace(portal, bus, QDBusServiceWatcher::WatchForRegistration);
  QObject::connect(&*coming_, &QDBusServiceWatcher::serviceRegistered, &news_,
                   [this] { news_.start(); });
  ask();
}

void AppearancePortal::ask() {
  ask("color-scheme", [this](const QVariant& value) { isDark_ = darkness(value); });
  ask("accent-color", [this](const QVariant& value) { accent_ = colour(value); });
}

// A portal that does not answer, or not this question, tells nothing new.
void AppearancePortal::ask(const char* key, std::function<void(const QVariant&)> take) {
  auto question = QDBusMessage::createMethodCall(portal, path, settings, "Read");
  question << appearance << key;
  auto* const call =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), &news_);
  QObject::connect(call, &QDBusPendingCallWatcher::finished, &news_,
                   [this, call, take = std::move(take)] {
                     call->deleteLater();
                     const auto values = call->reply().arguments();
                     if (call->isError() || values.isEmpty()) return;
                     take(unwrapped(values.constFirst()));
                     onChange_();
                   });
}

}  // namespace pellow
