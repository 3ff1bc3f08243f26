#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <string>
#include <vector>

namespace pellow::desktop {

// Red, green and blue, 0..1, as they travel on the bus.
struct AccentOnBus {
  double red = 0;
  double green = 0;
  double blue = 0;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const AccentOnBus& accent) {
  argument.beginStructure();
  argument << accent.red << accent.green << accent.blue;
  argument.endStructure();
  return argument;
}

// Qt registers no type without it.
inline const QDBusArgument& operator>>(const QDBusArgument& argument, AccentOnBus& accent) {
  argument.beginStructure();
  const auto& read = argument >> accent.red >> accent.green >> accent.blue;
  argument.endStructure();
  return read;
}

// A settings portal that knows the appearance alone, on a bus of the test. It lets questions wait
// until it is told to answer. There is a Qt application.
class SettingsPortal final : public QDBusVirtualObject {
 public:
  explicit SettingsPortal(const std::string& busAddress)
      : bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), "portal")) {
    qDBusRegisterMetaType<AccentOnBus>();
    bus_.registerVirtualObject(path, this);
    bus_.registerService("org.freedesktop.portal.Desktop");
  }
  ~SettingsPortal() override { QDBusConnection::disconnectFromBus("portal"); }

  bool wasAsked() const { return !waiting_.empty(); }

  // What it answers from now on, and to the questions that wait.
  void answer(unsigned colourScheme, const AccentOnBus& accent) {
    colourScheme_ = colourScheme;
    accent_ = accent;
    answers_ = true;
    for (const auto& question : waiting_) reply(question);
    waiting_.clear();
  }
  // The user changes the colour scheme.
  void change(unsigned colourScheme) {
    colourScheme_ = colourScheme;
    auto signal = QDBusMessage::createSignal(path, settings, "SettingChanged");
    signal << appearance << "color-scheme"
           << QVariant::fromValue(QDBusVariant(QVariant::fromValue(colourScheme)));
    bus_.send(signal);
  }

  QString introspect(const QString&) const override { return {}; }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
    if (message.interface() != settings || message.member() != "Read") return false;
    if (answers_) {
      reply(message);
    } else {
      waiting_.push_back(message);
    }
    return true;
  }

 private:
  static constexpr auto path = "/org/freedesktop/portal/desktop";
  static constexpr auto settings = "org.freedesktop.portal.Settings";
  static constexpr auto appearance = "org.freedesktop.appearance";

  // As real ones do, in a variant inside a variant.
  void reply(const QDBusMessage& question) {
    const auto key = question.arguments().value(1).toString();
    const auto value = key == "color-scheme"   ? QVariant::fromValue(colourScheme_)
                       : key == "accent-color" ? QVariant::fromValue(accent_)
                                               : QVariant();
    if (question.arguments().value(0).toString() != appearance || !value.isValid()) {
      bus_.send(question.createErrorReply("org.freedesktop.portal.Error.NotFound", "no such key"));
      return;
    }
    const auto once = QVariant::fromValue(QDBusVariant(value));
    bus_.send(question.createReply(QVariant::fromValue(QDBusVariant(once))));
  }

  QDBusConnection bus_;
  unsigned colourScheme_ = 0;
  AccentOnBus accent_;
  bool answers_ = false;
  std::vector<QDBusMessage> waiting_;
};

}  // namespace pellow::desktop
