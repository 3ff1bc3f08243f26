#include "platforms/linux/qt/panel_accessible.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleWidget>
#include <QPointer>
#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "platforms/linux/qt/panel_canvas.h"

namespace pellow {
namespace {

class AccessibleView final : public QAccessibleInterface, public QAccessibleActionInterface {
 public:
  AccessibleView(PanelCanvas* canvas, const std::shared_ptr<ViewNode>& node)
      : canvas_(canvas), node_(node) {}

  bool isValid() const override { return canvas_ && !node_.expired(); }
  QObject* object() const override { return nullptr; }
  QWindow* window() const override { return canvas_ ? canvas_->windowHandle() : nullptr; }
  QAccessibleInterface* parent() const override {
    return QAccessible::queryAccessibleInterface(canvas_.data());
  }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }

  QString text(QAccessible::Text kind) const override {
    const auto node = node_.lock();
    if (!node) return {};
    if (kind == QAccessible::Name) return QString::fromStdString(node->look.accessibleName);
    if (kind == QAccessible::Help) return QString::fromStdString(node->look.tooltip);
    return {};
  }
  void setText(QAccessible::Text, const QString&) override {}

  QRect rect() const override {
    if (!isValid()) return {};
    return canvas_->areaOf(*node_.lock()).translated(canvas_->mapToGlobal(QPoint(0, 0)));
  }

  QAccessible::Role role() const override {
    return canBeClicked() ? QAccessible::Button : QAccessible::Graphic;
  }

  QAccessible::State state() const override {
    QAccessible::State state;
    state.invisible = !canvas_ || !canvas_->isVisible();
    return state;
  }

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::ActionInterface && canBeClicked())
      return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
  }

  QStringList actionNames() const override {
    return canBeClicked() ? QStringList{pressAction()} : QStringList{};
  }
  void doAction(const QString& name) override {
    const auto node = node_.lock();
    if (canvas_ && node && name == pressAction()) canvas_->click(*node);
  }
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

 private:
  bool canBeClicked() const {
    const auto node = node_.lock();
    return node && node->actions.onClick;
  }

  QPointer<PanelCanvas> canvas_;
  std::weak_ptr<ViewNode> node_;
};

class AccessiblePanel final : public QAccessibleWidget {
 public:
  explicit AccessiblePanel(PanelCanvas* canvas)
      : QAccessibleWidget(canvas, QAccessible::ToolBar, canvas->windowTitle()), canvas_(canvas) {}
  ~AccessiblePanel() override {
    for (const auto& [node, view] : views_) QAccessible::deleteAccessibleInterface(view);
  }

  QString text(QAccessible::Text kind) const override {
    const auto name = canvas_->tree().accessibleName();
    if (kind == QAccessible::Name && !name.empty()) return QString::fromStdString(name);
    return QAccessibleWidget::text(kind);
  }

  int childCount() const override { return static_cast<int>(named().size()); }

  QAccessibleInterface* child(int index) const override {
    const auto nodes = named();
    if (index < 0 || index >= static_cast<int>(nodes.size())) return nullptr;
    return viewOf(nodes[static_cast<std::size_t>(index)]);
  }

  QAccessibleInterface* childAt(int x, int y) const override {
    QAccessibleInterface* found = nullptr;
    for (const auto& node : canvas_->nodesAt(canvas_->mapFromGlobal(QPoint(x, y))))
      if (canvas_->tree().isAccessible(*node)) found = viewOf(node);
    return found;
  }

  int indexOfChild(const QAccessibleInterface* view) const override {
    for (int index = 0; index < childCount(); ++index)
      if (child(index) == view) return index;
    return -1;
  }

 private:
  using Owner = std::owner_less<std::weak_ptr<ViewNode>>;

  std::vector<std::shared_ptr<ViewNode>> named() const {
    std::vector<std::shared_ptr<ViewNode>> nodes;
    canvas_->tree().visit([&](const auto& node, const ViewTransform&) {
      if (canvas_->tree().isAccessible(*node)) nodes.push_back(node);
    });
    return nodes;
  }

  QAccessibleInterface* viewOf(const std::shared_ptr<ViewNode>& node) const {
    std::erase_if(views_, [](const auto& entry) {
      if (!entry.first.expired()) return false;
      QAccessible::deleteAccessibleInterface(entry.second);
      return true;
    });
    auto [entry, isNew] = views_.try_emplace(node);
    if (isNew)
      entry->second = QAccessible::registerAccessibleInterface(new AccessibleView(canvas_, node));
    return QAccessible::accessibleInterface(entry->second);
  }

  PanelCanvas* canvas_;
  mutable std::map<std::weak_ptr<ViewNode>, QAccessible::Id, Owner> views_;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* const canvas = dynamic_cast<PanelCanvas*>(object);
  return canvas ? new AccessiblePanel(canvas) : nullptr;
}

}  // namespace

void installPanelAccessibility() { QAccessible::installFactory(makeInterface); }

}  // namespace pellow
