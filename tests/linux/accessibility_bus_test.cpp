#include "platforms/linux/accessibility_bus/accessibility_bus.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>

#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

namespace fs = std::filesystem;

FileDescriptor listenAt(const std::string& name) {
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  std::ranges::copy(name, address.sun_path);
  FileDescriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  EXPECT_EQ(bind(listener.number(), reinterpret_cast<sockaddr*>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())),
            0);
  EXPECT_EQ(listen(listener.number(), 8), 0);
  return listener;
}

// The address comes from the root window, where anybody may have written it.
TEST(AccessibilityBus, IsLookedForAtOneSocketOfThisUser) {
  std::string pattern = fs::temp_directory_path() / "pellow-bus-XXXXXX";
  const fs::path folder = mkdtemp(pattern.data());
  const auto mark = folder / "mark";
  const auto file = folder / "the bus";
  const auto listener = listenAt(file);
  const auto abstract = listenAt('\0' + folder.native());
  std::ofstream(folder / "file") << "no socket";

  const auto reaches = [](const FileDescriptor& at, const std::string& address) {
    using namespace std::chrono;
    (void)AccessibilityBus::open(address, steady_clock::now() + milliseconds(100));
    return bool(FileDescriptor(accept(at.number(), nullptr, nullptr)));
  };
  const auto good = "unix:path=" + folder.native() + "/the%20bus";
  const auto program = "unixexec:path=/usr/bin/touch,argv1=" + mark.native();
  EXPECT_TRUE(reaches(listener, good));
  EXPECT_TRUE(reaches(listener, good + ",guid=00112233445566778899aabbccddeeff"));
  EXPECT_TRUE(reaches(abstract, "unix:guid=0,abstract=" + folder.native()));
  for (const auto& bad :
       {program, "unix:path=/nowhere;" + program, good + ";" + program, program + ";" + good,
        good + ",abstract=x", good + ",dir=/tmp", good + "%0", good + "%00", std::string("unix:"),
        std::string("unix:path"), "unix:path=" + (folder / "file").native()})
    EXPECT_FALSE(reaches(listener, bad)) << bad;
  EXPECT_FALSE(fs::exists(mark)) << "a program was started";
  if (chown(file.c_str(), 1, 1) == 0) EXPECT_FALSE(reaches(listener, good)) << "not our own";
  fs::remove_all(folder);
}

}  // namespace
}  // namespace pellow
