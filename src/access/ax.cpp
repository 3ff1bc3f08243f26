#include "access/ax.h"

#include <array>

namespace pellow::AX {
namespace {

template <class T>
std::optional<T> read(const AXElement& element, std::string_view attribute) {
  return held<T>(element.copyAttribute(attribute));
}

}  // namespace

AXElement systemWide(Accessibility& accessibility) {
  auto element = accessibility.systemWide();
  element.setMessagingTimeout(timeout::systemWide);
  return element;
}

AXElement application(Accessibility& accessibility, ProcessID pid) {
  auto element = accessibility.application(pid);
  element.setMessagingTimeout(timeout::application);
  return element;
}

std::optional<std::string> string(const AXElement& element, std::string_view attribute) {
  return read<std::string>(element, attribute);
}

std::optional<bool> boolean(const AXElement& element, std::string_view attribute) {
  return read<bool>(element, attribute);
}

std::optional<AXElement> child(const AXElement& element, std::string_view attribute) {
  return read<AXElement>(element, attribute);
}

std::vector<AXElement> children(const AXElement& element, std::string_view attribute) {
  return read<std::vector<AXElement>>(element, attribute).value_or(std::vector<AXElement>{});
}

std::optional<QuartzRect> frame(const AXElement& element) {
  constexpr std::array both{attribute::position, attribute::size};
  const auto answers = element.copyMultipleAttributeValues(both);
  const auto position = held<QuartzPoint>(answers[0]);
  const auto size = held<Size>(answers[1]);
  if (!position || !size) return std::nullopt;
  return QuartzRect(*position, *size);
}

std::optional<AXElement> enclosingWindow(const AXElement& element) {
  constexpr int examinedAtMost = 8;
  std::optional<AXElement> current = element;
  for (int examined = 1; string(*current, attribute::role) != role::window; ++examined) {
    if (examined == examinedAtMost) return std::nullopt;
    current = child(*current, attribute::parent);
    if (!current) return std::nullopt;
  }
  return current;
}

}  // namespace pellow::AX
