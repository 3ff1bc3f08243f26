#include "access/ax.h"

#include <array>

namespace pellow::AX {
namespace {

template <class T>
std::optional<T> read(const AXElement& element, std::string_view attribute, Seconds timeout) {
  return held<T>(element.copyAttribute(attribute, timeout));
}

}  // namespace

std::optional<std::string> string(const AXElement& element, std::string_view attribute,
                                  Seconds timeout) {
  return read<std::string>(element, attribute, timeout);
}

std::optional<bool> boolean(const AXElement& element, std::string_view attribute, Seconds timeout) {
  return read<bool>(element, attribute, timeout);
}

std::optional<AXElement> child(const AXElement& element, std::string_view attribute,
                               Seconds timeout) {
  return read<AXElement>(element, attribute, timeout);
}

std::vector<AXElement> children(const AXElement& element, std::string_view attribute,
                                Seconds timeout) {
  return read<std::vector<AXElement>>(element, attribute, timeout)
      .value_or(std::vector<AXElement>{});
}

std::optional<QuartzRect> frame(const AXElement& element, Seconds timeout) {
  constexpr std::array both{attribute::position, attribute::size};
  const auto answers = element.copyMultipleAttributeValues(both, timeout);
  const auto position = held<QuartzPoint>(answers[0]);
  const auto size = held<Size>(answers[1]);
  if (!position || !size) return std::nullopt;
  return QuartzRect(*position, *size);
}

std::optional<AXElement> enclosingWindow(const AXElement& element, Seconds timeout) {
  constexpr int examinedAtMost = 8;
  std::optional<AXElement> current = element;
  for (int examined = 1; string(*current, attribute::role, timeout) != role::window; ++examined) {
    if (examined == examinedAtMost) return std::nullopt;
    current = child(*current, attribute::parent, timeout);
    if (!current) return std::nullopt;
  }
  return current;
}

}  // namespace pellow::AX
