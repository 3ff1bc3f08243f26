#include "sync/settings_sync.h"

#include <cstddef>
#include <utility>

#include "base/scoped_flag.h"

namespace pellow {
namespace {

constexpr std::string_view sharedFolder = "/Library/Mobile Documents/com~apple~CloudDocs";
constexpr std::string_view fileName = "/Pellow/settings.json";
constexpr Seconds pollInterval = 5;
constexpr std::size_t largestFile = 1 << 20;  // bytes; a hundred zones take a thirtieth of it

}  // namespace

void SettingsSync::start() {
  for (const auto* const change :
       {Preferences::didChange, ZoneStore::didChange, ShortcutStore::didChange})
    observers_.push_back(around_.notifications.observe(change, [this] { write(); }));
  if (const auto file = path(); file && isOn()) pullIfChanged(*file);
  write();
  timer_ = around_.mainQueue.every(pollInterval, [this] { poll(); });
}

void SettingsSync::stop() {
  timer_.cancel();
  observers_.clear();
}

std::string SettingsSync::status() const {
  return std::string(path() ? around_.texts.syncPlace : around_.texts.syncUnavailable);
}

std::optional<std::string> SettingsSync::path() const {
  auto folder = around_.files.homeFolder().append(sharedFolder);
  if (!around_.files.isFolder(folder)) return std::nullopt;
  return folder.append(fileName);
}

std::optional<std::string> SettingsSync::encodedState() const {
  return SettingsDocument{.defaultZoneID = around_.zones.defaultZone().id,
                          .pins = around_.zones.pins,
                          .preferences = around_.preferences.exportForSync(),
                          .shortcuts = around_.shortcuts.overrides(),
                          .zones = around_.zones.zones()}
      .encoded();
}

// Pins change without a notice.
void SettingsSync::poll() {
  if (!isOn()) return;
  const auto file = path();
  if (!file) return;
  pullIfChanged(*file);
  if (encodedState() != lastOffered_) write();
}

void SettingsSync::pullIfChanged(const std::string& path) {
  const auto stamp = around_.files.stamp(path);
  if (!stamp || stamp == lastSeen_) return;
  auto bytes = around_.files.read(path, largestFile);
  if (!bytes) return;
  lastSeen_ = stamp;
  if (*bytes == lastWritten_) return;
  auto document = SettingsDocument::decoded(*bytes);
  if (!document) return;
  apply(*std::move(document));
  lastWritten_ = *std::move(bytes);
  lastOffered_ = encodedState();
  around_.log.info("{}", std::string_view(around_.texts.syncApplied));
}

void SettingsSync::apply(SettingsDocument document) {
  const ScopedFlag applying(isApplying_);
  around_.preferences.applySynced(document.preferences);
  around_.zones.applySynced(document.zones, document.pins, document.defaultZoneID);
  if (document.shortcuts != around_.shortcuts.overrides())
    around_.shortcuts.replaceOverrides(std::move(document.shortcuts));
}

void SettingsSync::write() {
  if (isApplying_ || !isOn()) return;
  const auto file = path();
  if (!file) return;
  lastOffered_ = encodedState();
  if (!lastOffered_ || lastOffered_ == lastWritten_ || !makeRoom(*file)) return;
  const auto written = around_.files.write(*file, *lastOffered_);
  if (!written) return logFailure(written.error());
  lastWritten_ = lastOffered_;
  lastSeen_ = *written;
}

bool SettingsSync::makeRoom(const std::string& path) {
  if (!around_.files.stamp(path)) return true;
  const auto bytes = around_.files.read(path, largestFile);
  if (bytes && SettingsDocument::decoded(*bytes)) return true;
  const auto kept = around_.files.rename(path, path + ".bad");
  if (!kept) logFailure(kept.error());
  return kept.has_value();
}

void SettingsSync::logFailure(const SystemError& error) const {
  around_.log.error("Could not write synced settings: {}", error.sentence);
}

}  // namespace pellow
