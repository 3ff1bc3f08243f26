#include "platforms/linux/updates/feed_updates.h"

#include <fmt/format.h>

#include <QString>
#include <QTextDocumentFragment>
#include <algorithm>
#include <utility>

#include "platforms/linux/updates/version_order.h"

namespace pellow {

namespace {

constexpr std::string_view automaticKey = "SUEnableAutomaticChecks";
constexpr std::string_view lastCheckKey = "SULastCheckTime";
constexpr Seconds interval = 24 * 60 * 60;

// The beginning of the notes as plain text, below a line that stands before it. An alert does not
// scroll, and with deep tables Qt takes minutes for a megabyte.
std::string summary(const std::string& notes) {
  constexpr std::size_t most = 16 * 1024;  // bytes that are looked at
  constexpr int mostLines = 12;
  constexpr int mostCharacters = 600;
  auto text = QString::fromUtf8(notes.substr(0, most));
  if (Qt::mightBeRichText(text)) text = QTextDocumentFragment::fromHtml(text).toPlainText();
  text = text.remove(QChar::ObjectReplacementCharacter).trimmed();
  auto beginning = text.section('\n', 0, mostLines - 1).left(mostCharacters).trimmed();
  if (beginning.size() < text.size()) beginning += u'…';
  return beginning.isEmpty() ? std::string() : "\n\n" + beginning.toStdString();
}

}  // namespace

FeedUpdates::FeedUpdates(Build build, Around around)
    : build_(std::move(build)), around_(std::move(around)) {}

void FeedUpdates::start(UpdateDelegate delegate) {
  delegate_ = std::move(delegate);
  hasStarted_ = true;
  schedule();
}

bool FeedUpdates::automaticallyChecks() const {
  return !around_.defaults.value(automaticKey) || boolean(around_.defaults, automaticKey);
}

void FeedUpdates::setAutomaticallyChecks(bool automatically) {
  around_.defaults.set(automaticKey, automatically);
  schedule();
}

std::optional<Seconds> FeedUpdates::sinceLastCheck() const {
  if (!around_.defaults.value(lastCheckKey)) return std::nullopt;
  // A clock that was set back must not put off the next check.
  return std::max(around_.now() - number(around_.defaults, lastCheckKey), 0.0);
}

std::optional<std::string> FeedUpdates::currentVersion() const {
  return build_.version.empty() ? std::nullopt : std::optional(build_.version);
}

void FeedUpdates::schedule() {
  timer_.cancel();
  if (!hasStarted_ || build_.feed.empty() || !automaticallyChecks()) return;
  const auto wait = interval - sinceLastCheck().value_or(interval);
  timer_ = around_.queue.after(std::max(wait, 0.0), [this] { check(Asker::schedule); });
}

void FeedUpdates::checkForUpdates() {
  if (!build_.feed.empty()) return check(Asker::user);
  show("This Pellow has no update feed.",
       "It was built without the address of one. New versions come from where you got this one.");
}

// Whoever asks while a check is under way waits for its answer.
void FeedUpdates::check(Asker asker) {
  if (download_) {
    if (asker == Asker::user) asker_ = asker;
    return;
  }
  asker_ = asker;
  around_.defaults.set(lastCheckKey, around_.now());
  if (!network_) network_.emplace();
  download_ = std::make_unique<FeedDownload>(
      *network_, around_.queue, build_.feed, "Pellow/" + build_.version, build_.patience,
      [this](std::expected<std::string, SystemError> answer) {
        download_.reset();
        schedule();
        finish(answer ? newestInAppcast(*answer, links()) : std::unexpected(answer.error()));
      });
}

// Whoever builds with a feed that anybody on the way can change has chosen so for its links too.
AppcastLinks FeedUpdates::links() const {
  return build_.feed.starts_with("http://") ? AppcastLinks::httpAndHttps : AppcastLinks::https;
}

void FeedUpdates::finish(const Found& found) {
  if (asker_ == Asker::user) return tellUser(found);
  if (!found) return around_.log.info("{}", found.error().sentence);
  if (isNewer(*found) && delegate_.willShowUpdate)
    delegate_.willShowUpdate(false, (*found)->displayVersion);
}

bool FeedUpdates::isNewer(const std::optional<AppcastItem>& item) const {
  return item && compareVersions(item->version, build_.version) > 0;
}

void FeedUpdates::tellUser(const Found& found) {
  if (!found) return show("Pellow could not look for updates.", found.error().sentence);
  if (isNewer(*found)) return offer(**found);
  show("Pellow is up to date.", fmt::format("Version {} is the newest one.", build_.version));
}

void FeedUpdates::offer(const AppcastItem& item) {
  if (delegate_.willShowUpdate) delegate_.willShowUpdate(true, item.displayVersion);
  const Alert alert{
      .messageText = "A new version of Pellow is available.",
      .informativeText = fmt::format("Pellow {} is out; you have version {}.{}",
                                     item.displayVersion, build_.version, summary(item.notes)),
      .buttons = item.page.empty() ? std::vector<std::string>{"OK"}
                                   : std::vector<std::string>{"Open Download Page", "Later"}};
  alert_ = around_.alerts.show(alert, [this, page = item.page](std::size_t button) {
    const bool wantsPage = button == 0 && !page.empty();
    alert_.cancel();
    if (wantsPage) openPage(page);
  });
  if (delegate_.didReceiveUserAttention) delegate_.didReceiveUserAttention();
}

void FeedUpdates::openPage(const std::string& page) {
  if (!around_.workspace.open(page)) show("No program to open web pages with was found.", page);
}

void FeedUpdates::show(std::string message, std::string information) {
  const Alert alert{.messageText = std::move(message),
                    .informativeText = std::move(information),
                    .buttons = {"OK"}};
  alert_ = around_.alerts.show(alert, [this](std::size_t) { alert_.cancel(); });
}

}  // namespace pellow
