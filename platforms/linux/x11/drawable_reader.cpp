#include "platforms/linux/x11/drawable_reader.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <xcb/shm.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

namespace pellow {

namespace {

constexpr std::uint8_t depthWithAlpha = 32;
constexpr std::uint8_t depthWithoutAlpha = 24;
constexpr std::uint32_t allPlanes = ~0u;

// Memory of this process that the X server may write to. It goes with its last user, even if that
// is killed.
class SharedMemory {
 public:
  SharedMemory(X11Connection& connection, std::size_t bytes, Deadline deadline)
      : connection_(connection), segment_(xcb_generate_id(connection.raw())) {
    const int memory = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (memory < 0) return;
    if (auto* const address = shmat(memory, nullptr, 0); address != reinterpret_cast<void*>(-1)) {
      address_ = address;
      const auto attached =
          xcb_shm_attach_checked(connection.raw(), segment_, static_cast<std::uint32_t>(memory), 0);
      isAttached_ = connection.check(attached, deadline).has_value();
    }
    shmctl(memory, IPC_RMID, nullptr);
  }
  ~SharedMemory() {
    if (isAttached_) xcb_shm_detach(connection_.raw(), segment_);
    if (address_) shmdt(address_);
  }
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;

  explicit operator bool() const { return isAttached_; }
  xcb_shm_seg_t segment() const { return segment_; }
  const void* address() const { return address_; }

 private:
  X11Connection& connection_;
  xcb_shm_seg_t segment_;
  void* address_ = nullptr;
  bool isAttached_ = false;
};

std::size_t byteCount(const Pixels& pixels) { return pixels.values.size() * sizeof(std::uint32_t); }

bool hasExtension(X11Connection& connection, xcb_extension_t& extension) {
  const auto* const data = xcb_get_extension_data(connection.raw(), &extension);
  return data && data->present;
}

std::uint8_t bitsPerPixel(X11Connection& connection, std::uint8_t depth) {
  const auto* const setup = xcb_get_setup(connection.raw());
  const std::span formats(xcb_setup_pixmap_formats(setup),
                          std::size_t(xcb_setup_pixmap_formats_length(setup)));
  const auto found = std::ranges::find(formats, depth, &xcb_format_t::depth);
  return found == formats.end() ? std::uint8_t{0} : found->bits_per_pixel;
}

bool isSwapped(X11Connection& connection) {
  const bool isServerLittle =
      xcb_get_setup(connection.raw())->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
  return isServerLittle != (std::endian::native == std::endian::little);
}

}  // namespace

DrawableReader::DrawableReader(X11Connection& connection)
    : connection_(connection), canShare_(hasExtension(connection, xcb_shm_id)) {}

bool DrawableReader::canRead(std::uint8_t depth) const {
  const bool isKnown = depth == depthWithAlpha || depth == depthWithoutAlpha;
  return isKnown && bitsPerPixel(connection_, depth) == 8 * sizeof(std::uint32_t);
}

std::expected<Pixels, AXError> DrawableReader::read(xcb_drawable_t drawable, std::uint8_t depth,
                                                    const PixelRect& part, Deadline deadline) {
  Pixels pixels{{part.width, part.height},
                std::vector<std::uint32_t>(static_cast<std::size_t>(part.area()))};
  if (!canShare_ || !readShared(drawable, part, pixels, deadline)) {
    auto pending = connection_.pending<xcb_get_image_reply_t>(xcb_get_image(
        connection_.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable, static_cast<std::int16_t>(part.x),
        static_cast<std::int16_t>(part.y), static_cast<std::uint16_t>(part.width),
        static_cast<std::uint16_t>(part.height), allPlanes));
    const auto image = pending.collect(deadline);
    if (!image) return std::unexpected(image.error());
    if (std::size_t(xcb_get_image_data_length(image->get())) < byteCount(pixels))
      return std::unexpected(AXError::failure);
    std::memcpy(pixels.values.data(), xcb_get_image_data(image->get()), byteCount(pixels));
  }
  if (isSwapped(connection_))
    for (auto& pixel : pixels.values) pixel = std::byteswap(pixel);
  if (depth != depthWithAlpha)
    for (auto& pixel : pixels.values) pixel |= 0xff000000;
  return pixels;
}

bool DrawableReader::readShared(xcb_drawable_t drawable, const PixelRect& part, Pixels& pixels,
                                Deadline deadline) {
  const SharedMemory memory(connection_, byteCount(pixels), deadline);
  if (!memory) return false;
  auto pending = connection_.pending<xcb_shm_get_image_reply_t>(
      xcb_shm_get_image(connection_.raw(), drawable, static_cast<std::int16_t>(part.x),
                        static_cast<std::int16_t>(part.y), static_cast<std::uint16_t>(part.width),
                        static_cast<std::uint16_t>(part.height), allPlanes,
                        XCB_IMAGE_FORMAT_Z_PIXMAP, memory.segment(), 0));
  if (!pending.collect(deadline)) return false;
  std::memcpy(pixels.values.data(), memory.address(), byteCount(pixels));
  return true;
}

}  // namespace pellow
