#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/files.h"

namespace pellow::simulated {

// What may lie in a place.
struct StoredFile {
  enum class Kind { ordinary, folder, pipe, forbidden };

  Kind kind = Kind::ordinary;
  std::string contents;
  FileStamp stamp;
};

// A disk. Several desktops may have the same one, as if somebody carried every file between them.
struct Disk {
  std::map<std::string, StoredFile> files;
  std::uint64_t writes = 0;  // of files by programs, so far
  std::uint64_t reads = 0;
  std::optional<std::string> isFull;  // why nothing can be written
  std::int64_t now = 1'000'000'000;   // the clock of whoever writes next

  // Somebody writes the file.
  void put(const std::string& path, std::string contents,
           StoredFile::Kind kind = StoredFile::Kind::ordinary);
  // Its contents; nothing when there is no ordinary file.
  std::optional<std::string> contents(const std::string& path) const;
};

// The files of the desktop, on a disk that outlives it.
class Files final : public pellow::Files {
 public:
  // The home folder exists, and is empty.
  std::string homeFolder() const override { return "/home/user"; }
  std::string temporaryFolder() const override { return "/tmp"; }
  bool isFolder(const std::string& path) const override;
  std::optional<FileStamp> stamp(const std::string& path) const override;
  std::expected<std::string, SystemError> read(const std::string& path,
                                               std::size_t limit) const override;
  std::expected<FileStamp, SystemError> write(const std::string& path,
                                              std::string_view contents) override;
  std::expected<void, SystemError> rename(const std::string& from, const std::string& to) override;

  Disk& disk() { return *disk_; }
  // From now on, the one of another desktop.
  void share(const Files& other) { disk_ = other.disk_; }

 private:
  std::shared_ptr<Disk> disk_ = std::make_shared<Disk>();
};

}  // namespace pellow::simulated
