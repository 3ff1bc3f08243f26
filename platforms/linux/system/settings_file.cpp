#include "platforms/linux/system/settings_file.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace pellow {
namespace {

using namespace std::chrono_literals;

constexpr auto writeDelay = 250ms;  // well within the second that a write may take
constexpr auto patience = 3s;

}  // namespace

struct SettingsFile::State {
  State(const std::filesystem::path& path, const Log& systemLog)
      : file(path, systemLog), log(systemLog) {}

  const DefaultsFile file;
  const Log log;

  std::mutex mutex;
  std::condition_variable workHasCome;
  std::condition_variable writeHasEnded;
  DefaultsFile::Values values = DefaultsFile::Values::object();
  DefaultsFile::Keys changed;  // since the last write
  bool isUnusable = false;     // the file cannot be read and must not be replaced
  bool wantsWrite = false;
  bool isWriting = false;
  bool isFinishing = false;
  bool hasEnded = false;
  std::optional<SystemError> reported;  // the last failure, until a write succeeds

  bool hasWritten() const { return !wantsWrite && !isWriting; }
  void read();
  void run();
  void write(std::unique_lock<std::mutex>& lock);
  void report(const std::expected<void, SystemError>& written);
};

void SettingsFile::State::read() {
  if (auto contents = file.read()) {
    values = std::move(*contents).value_or(DefaultsFile::Values::object());
  } else {
    isUnusable = true;
    log.warning("{}", contents.error().sentence);
  }
}

void SettingsFile::State::run() {
  std::unique_lock lock(mutex);
  for (;;) {
    workHasCome.wait(lock, [this] { return wantsWrite || hasEnded; });
    if (!wantsWrite) return;
    workHasCome.wait_for(lock, writeDelay, [this] { return isFinishing || hasEnded; });
    write(lock);
    writeHasEnded.notify_all();
  }
}

void SettingsFile::State::write(std::unique_lock<std::mutex>& lock) {
  wantsWrite = false;
  isWriting = true;
  auto keys = std::exchange(changed, {});
  const auto snapshot = values;
  lock.unlock();
  const auto written = file.store(snapshot, keys);
  report(written);
  lock.lock();
  isWriting = false;
  if (!written) changed.merge(keys);  // the next write takes them along
}

// Not every quarter of a second.
void SettingsFile::State::report(const std::expected<void, SystemError>& written) {
  if (!written && reported != written.error()) log.warning("{}", written.error().sentence);
  reported = written ? std::nullopt : std::optional(written.error());
}

SettingsFile::SettingsFile(const std::filesystem::path& path, const Log& log)
    : state_(std::make_shared<State>(path, log)) {
  state_->read();
}

SettingsFile::~SettingsFile() {
  finish();
  if (!thread_.joinable()) return;
  std::unique_lock lock(state_->mutex);
  const bool hasWritten = state_->hasWritten();
  state_->hasEnded = true;
  state_->workHasCome.notify_one();
  lock.unlock();
  // A disk that hangs must not hang the program.
  if (hasWritten)
    thread_.join();
  else
    thread_.detach();
}

std::optional<DefaultsFile::Values> SettingsFile::value(std::string_view key) const {
  const std::lock_guard lock(state_->mutex);
  const auto found = state_->values.find(key);
  return found == state_->values.end() ? std::nullopt : std::optional(*found);
}

void SettingsFile::set(std::string_view key, DefaultsFile::Values value) {
  const std::lock_guard lock(state_->mutex);
  auto& stored = state_->values;
  if (const auto found = stored.find(key); found == stored.end() || *found != value) {
    stored[std::string(key)] = std::move(value);
    state_->changed.emplace(key);
  }
  requestWrite();
}

void SettingsFile::remove(std::string_view key) {
  const std::lock_guard lock(state_->mutex);
  if (state_->values.erase(std::string(key)) > 0) state_->changed.emplace(key);
  requestWrite();
}

void SettingsFile::requestWrite() {
  if (state_->changed.empty() || state_->isUnusable) return;
  state_->wantsWrite = true;
  if (thread_.joinable()) {
    state_->workHasCome.notify_one();
  } else {
    thread_ = std::thread([state = state_] { state->run(); });
    pthread_setname_np(thread_.native_handle(), "settings");
  }
}

void SettingsFile::finish() {
  std::unique_lock lock(state_->mutex);
  requestWrite();
  state_->isFinishing = true;
  state_->workHasCome.notify_one();
  const bool isWritten =
      state_->writeHasEnded.wait_for(lock, patience, [this] { return state_->hasWritten(); });
  state_->isFinishing = false;
  if (isWritten) return;
  state_->log.warning(
      "The disk has not taken {} within {} seconds; the latest changes may be lost.",
      state_->file.path().native(), patience.count());
}

}  // namespace pellow
