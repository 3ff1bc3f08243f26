#include "platforms/linux/system/defaults_encoding.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace pellow {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view base64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string encodeBase64(std::string_view bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const auto group = bytes.substr(at, 3);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i)
      bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0u);
    for (std::size_t i = 0; i < 4; ++i)
      text += i <= group.size() ? base64Digits[bits >> (18 - 6 * i) & 0x3F] : '=';
  }
  return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const auto digits = text.substr(0, text.find('='));
  if (text.size() - digits.size() > 2 ||
      text.substr(digits.size()).find_first_not_of('=') != std::string_view::npos)
    return std::nullopt;
  std::string bytes;
  std::uint32_t bits = 0;
  int pending = 0;
  for (const char digit : digits) {
    const auto value = base64Digits.find(digit);
    if (value == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    pending += 6;
    if (pending < 8) continue;
    pending -= 8;
    bytes += static_cast<char>(bits >> pending & 0xFF);
  }
  return bytes;
}

// The length of the UTF-8 character at the start of `text`; 0 when there is none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return 1;
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  // Longer than needed, a surrogate, or beyond U+10FFFF.
  if (byte(0) == 0xE0 && byte(1) < 0xA0) return 0;
  if (byte(0) == 0xED && byte(1) > 0x9F) return 0;
  if (byte(0) == 0xF0 && byte(1) < 0x90) return 0;
  if (byte(0) == 0xF4 && byte(1) > 0x8F) return 0;
  return length;
}

bool isUTF8(std::string_view text) {
  while (!text.empty()) {
    const auto length = characterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

struct Encoder {
  Json operator()(bool value) const { return value; }
  Json operator()(double value) const {
    constexpr double exact = 1LL << 53;
    if (std::abs(value) <= exact && value == std::floor(value))
      return static_cast<std::int64_t>(value);
    return value;
  }
  Json operator()(const std::string& value) const { return value; }
  Json operator()(const DefaultsData& value) const {
    if (isUTF8(value.bytes)) return {{"data", value.bytes}};
    return {{"base64", encodeBase64(value.bytes)}};
  }
};

std::optional<DefaultsValue> decodeData(const Json& json) {
  if (json.size() != 1 || !json.front().is_string()) return std::nullopt;
  const auto& text = json.front().get_ref<const std::string&>();
  if (json.contains("data")) return DefaultsData{text};
  if (!json.contains("base64")) return std::nullopt;
  auto bytes = decodeBase64(text);
  if (!bytes) return std::nullopt;
  return DefaultsData{std::move(*bytes)};
}

}  // namespace

nlohmann::ordered_json encodeDefaultsValue(const DefaultsValue& value) {
  return std::visit(Encoder{}, value);
}

std::optional<DefaultsValue> decodeDefaultsValue(const nlohmann::ordered_json& json) {
  if (json.is_boolean()) return json.get<bool>();
  if (json.is_number()) return json.get<double>();
  if (json.is_string()) return json.get<std::string>();
  if (json.is_object()) return decodeData(json);
  return std::nullopt;
}

}  // namespace pellow
