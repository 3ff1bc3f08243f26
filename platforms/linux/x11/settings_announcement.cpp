#include "platforms/linux/x11/settings_announcement.h"

#include <cstddef>
#include <cstdint>

namespace pellow {
namespace {

// The settings as the daemon lays them out: numbers in the byte order that it states.
class Announcement {
 public:
  explicit Announcement(std::string_view bytes) : bytes_(bytes) {}

  std::optional<std::string> text(std::string_view wanted) {
    constexpr std::size_t header = 12;
    isBigEndian_ = !bytes_.empty() && bytes_[0] == 1;
    at_ = 8;
    const auto count = number(4);
    at_ = header;
    for (std::uint32_t i = 0; i < count && at_ < bytes_.size(); ++i) {
      const auto type = number(1);
      at_ += 1;
      const auto name = padded(number(2));
      at_ += 4;  // the serial number of its last change
      constexpr std::uint32_t integer = 0;
      constexpr std::uint32_t string = 1;
      if (type == string) {
        const auto value = padded(number(4));
        if (name == wanted) return std::string(value);
      } else {
        at_ += type == integer ? 4 : 8;
      }
    }
    return std::nullopt;
  }

 private:
  std::uint32_t number(int size) {
    std::uint32_t value = 0;
    for (int i = 0; i < size; ++i, ++at_) {
      const std::uint32_t byte = at_ < bytes_.size() ? static_cast<unsigned char>(bytes_[at_]) : 0;
      value |= byte << 8 * (isBigEndian_ ? size - 1 - i : i);
    }
    return value;
  }
  // A text of this length, padded to a multiple of four.
  std::string_view padded(std::uint32_t length) {
    const auto text = at_ < bytes_.size() ? bytes_.substr(at_, length) : std::string_view();
    at_ += (std::size_t{length} + 3) / 4 * 4;
    return text;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  bool isBigEndian_ = false;
};

}  // namespace

std::optional<std::string> announcedText(std::string_view announcement, std::string_view name) {
  return Announcement(announcement).text(name);
}

}  // namespace pellow
