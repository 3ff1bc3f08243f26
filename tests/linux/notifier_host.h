#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <string>
#include <vector>

namespace pellow::desktop {

// The smallest host for StatusNotifierItems there can be, with the watcher that lists them, on a
// bus of the test. There is a Qt application.
class NotifierHost final : public QDBusVirtualObject {
 public:
  explicit NotifierHost(const std::string& busAddress)
      : bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), "host")) {
    bus_.registerVirtualObject(path, this);
  }
  ~NotifierHost() override { QDBusConnection::disconnectFromBus("host"); }

  // Only the watcher comes; the host after it; both go.
  bool startWatcher() { return bus_.registerService(service); }
  void startHost() {
    hasHost_ = true;
    bus_.send(QDBusMessage::createSignal(path, service, "StatusNotifierHostRegistered"));
  }
  void stop() {
    hasHost_ = false;
    items_.clear();
    bus_.unregisterService(service);
  }

  // Whether somebody has asked for a host.
  bool wasAsked() const { return wasAsked_; }

  // The bus names of the programs that have shown an item here.
  const std::vector<QString>& items() const { return items_; }

  // A property of an item, asked for on the bus.
  QVariant property(const QString& item, const char* name) {
    auto question = QDBusMessage::createMethodCall(item, "/StatusNotifierItem",
                                                   "org.freedesktop.DBus.Properties", "Get");
    question << "org.kde.StatusNotifierItem" << name;
    const auto answer = bus_.call(question);
    return answer.arguments().isEmpty()
               ? QVariant()
               : answer.arguments().constFirst().value<QDBusVariant>().variant();
  }

  // The menu of an item as a host would show it, one line an item: "✓ Title", "Title (disabled)";
  // reads it anew. `choose` presses the item of that title.
  std::vector<std::string> menu(const QString& item) {
    entries_.clear();
    callMenu(item, "AboutToShow", {0});
    const auto answer = callMenu(item, "GetLayout", {0, -1, QStringList()});
    if (answer.arguments().size() == 2) readLayout(answer.arguments()[1].value<QDBusArgument>());
    std::vector<std::string> lines;
    for (const auto& entry : entries_) lines.push_back(entry.line);
    return lines;
  }
  void choose(const QString& item, const std::string& line) {
    menu(item);
    for (const auto& entry : entries_)
      if (entry.line == line)
        callMenu(item, "Event", {entry.id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
  }

  // Qt believes only in what it finds here.
  QString introspect(const QString&) const override {
    return QString(
               "<interface name='%1'><property name='IsStatusNotifierHostRegistered' type='b' "
               "access='read'/></interface>")
        .arg(service);
  }
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    if (message.member() == "RegisterStatusNotifierItem") {
      items_.push_back(message.service());
      return bus.send(message.createReply());
    }
    if (message.member() != "Get") return false;
    wasAsked_ = true;
    return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(hasHost_))));
  }

 private:
  struct Entry {
    int id = 0;
    std::string line;
  };

  QDBusMessage callMenu(const QString& item, const char* member, const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(item, "/MenuBar", "com.canonical.dbusmenu", member);
    call.setArguments(arguments);
    return bus_.call(call);
  }

  // A number, properties, and the same of each child.
  void readLayout(const QDBusArgument& layout) {
    int id = 0;
    QVariantMap properties;
    layout.beginStructure();
    layout >> id >> properties;
    if (const auto label = properties["label"].toString(); !label.isEmpty())
      entries_.push_back(
          {id, (properties["toggle-state"].toInt() == 1 ? "✓ " : "") +
                   QString(label).remove('_').toStdString() +
                   (properties.value("enabled", true).toBool() ? "" : " (disabled)")});
    layout.beginArray();
    while (!layout.atEnd()) {
      QDBusVariant child;
      layout >> child;
      readLayout(child.variant().value<QDBusArgument>());
    }
    layout.endArray();
    layout.endStructure();
  }

  static constexpr auto service = "org.kde.StatusNotifierWatcher";
  static constexpr auto path = "/StatusNotifierWatcher";

  QDBusConnection bus_;
  bool hasHost_ = false;
  bool wasAsked_ = false;
  std::vector<QString> items_;
  std::vector<Entry> entries_;
};

}  // namespace pellow::desktop
