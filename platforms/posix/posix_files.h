#pragma once

#include <string>
#include <utility>

#include "platform/files.h"

namespace pellow {

class PosixFiles final : public Files {
 public:
  PosixFiles(std::string home, std::string temporary)
      : home_(std::move(home)), temporary_(std::move(temporary)) {}

  std::string homeFolder() const override { return home_; }
  std::string temporaryFolder() const override { return temporary_; }
  bool isFolder(const std::string& path) const override;
  std::optional<FileStamp> stamp(const std::string& path) const override;
  std::expected<std::string, SystemError> read(const std::string& path,
                                               std::size_t limit) const override;
  std::expected<FileStamp, SystemError> write(const std::string& path,
                                              std::string_view contents) override;
  std::expected<void, SystemError> rename(const std::string& from, const std::string& to) override;

 private:
  const std::string home_;
  const std::string temporary_;
};

}  // namespace pellow
