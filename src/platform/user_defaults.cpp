#include "platform/user_defaults.h"

#include <utility>

#include <fmt/format.h>

#include "base/number.h"

namespace pellow {
namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

std::string_view withoutLeadingSpace(std::string_view text) {
  const auto start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

// Whether the text begins, past a sign and zeros, with 1 to 9, Y or T, in either case.
bool booleanOf(std::string_view text) {
  text = withoutLeadingSpace(text);
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  const auto decisive = text.find_first_not_of('0');
  return decisive != std::string_view::npos &&
         std::string_view("123456789YyTt").find(text[decisive]) != std::string_view::npos;
}

// The decimal number the text begins with, else 0.
double numberOf(std::string_view text) {
  return leadingNumber(withoutLeadingSpace(text)).value_or(0);
}

}  // namespace

bool boolean(const UserDefaults& defaults, std::string_view key) {
  const auto value = defaults.value(key);
  if (!value) return false;
  return std::visit(
      Overloaded{[](bool truth) { return truth; }, [](double number) { return number != 0; },
                 [](const std::string& text) { return booleanOf(text); },
                 [](const DefaultsData&) { return false; }},
      *value);
}

double number(const UserDefaults& defaults, std::string_view key) {
  const auto value = defaults.value(key);
  if (!value) return 0;
  return std::visit(
      Overloaded{[](bool truth) { return truth ? 1.0 : 0.0; }, [](double number) { return number; },
                 [](const std::string& text) { return numberOf(text); },
                 [](const DefaultsData&) { return 0.0; }},
      *value);
}

std::optional<std::string> text(const UserDefaults& defaults, std::string_view key) {
  using Text = std::optional<std::string>;
  auto value = defaults.value(key);
  if (!value) return std::nullopt;
  return std::visit(Overloaded{[](bool truth) -> Text { return truth ? "1" : "0"; },
                               [](double number) -> Text { return fmt::format("{}", number); },
                               [](std::string& text) -> Text { return std::move(text); },
                               [](DefaultsData&) -> Text { return std::nullopt; }},
                    *value);
}

std::optional<std::string> data(const UserDefaults& defaults, std::string_view key) {
  auto value = defaults.value(key);
  auto* const held = value ? std::get_if<DefaultsData>(&*value) : nullptr;
  if (!held) return std::nullopt;
  return std::move(held->bytes);
}

}  // namespace pellow
