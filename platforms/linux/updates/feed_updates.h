#pragma once

#include <QNetworkAccessManager>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/log.h"
#include "platform/alerts.h"
#include "platform/queues.h"
#include "platform/update_framework.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"
#include "platforms/linux/updates/appcast.h"
#include "platforms/linux/updates/feed_download.h"

namespace pellow {

// Looks for newer versions in an appcast feed and never installs one: it shows whoever asks the way
// to the download page. Without a feed it never looks. Looks once a day on its own, and at once
// when the last time is longer ago; "SUEnableAutomaticChecks" and "SULastCheckTime" (seconds since
// 1970) in the user defaults say whether, and when the last time was.
class FeedUpdates final : public UpdateFramework {
 public:
  // What a build of the program knows of itself.
  struct Build {
    std::string version;
    std::string feed;       // empty: none
    Seconds patience = 60;  // with the server
  };
  // What it works with, for as long as it lives.
  struct Around {
    UserDefaults& defaults;
    MainQueue& queue;
    Alerts& alerts;
    Workspace& workspace;
    const Log& log;
    std::function<Seconds()> now;  // since 1970
  };

  FeedUpdates(Build build, Around around);

  void start(UpdateDelegate delegate) override;
  void checkForUpdates() override;
  bool automaticallyChecks() const override;
  void setAutomaticallyChecks(bool automatically) override;
  std::optional<Seconds> sinceLastCheck() const override;
  std::optional<std::string> currentVersion() const override;

 private:
  enum class Asker { schedule, user };
  using Found = std::expected<std::optional<AppcastItem>, SystemError>;

  void schedule();
  void check(Asker asker);
  AppcastLinks links() const;
  void finish(const Found& found);
  bool isNewer(const std::optional<AppcastItem>& item) const;
  void tellUser(const Found& found);
  void offer(const AppcastItem& item);
  void openPage(const std::string& page);
  void show(std::string message, std::string information);

  const Build build_;
  const Around around_;
  UpdateDelegate delegate_;
  bool hasStarted_ = false;
  std::optional<QNetworkAccessManager> network_;  // from the first check on
  std::unique_ptr<FeedDownload> download_;
  Asker asker_ = Asker::schedule;  // who waits for the download
  Subscription timer_;
  Subscription alert_;
};

}  // namespace pellow
