#include "ui/appearance_pane.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

#include "ui/form_builders.h"

namespace pellow {
namespace {

using Elements = std::vector<FormElement>;

void addTabs(Elements& elements, Preferences& preferences) {
  const double size = preferences.tabSize();
  elements.push_back(form::section("Tabs"));
  elements.push_back(
      form::row("Size", form::slider(preferences, preference::tabSize,
                                     {.minimum = 20, .maximum = 72, .value = size})));
  elements.push_back(form::note(
      "size", fmt::format("{:.0f} pt. Right-click any tab to override it individually.", size)));
  elements.push_back(form::checkBox(preferences, preference::showTitles, "Show window titles"));
  const bool hasImages = preferences.value(preference::useThumbnails);
  auto images = form::checkBox(preferences, preference::thumbnailTabs,
                               "Show the window image on tabs, not just the app icon");
  images.isEnabled = hasImages;
  elements.push_back(std::move(images));
  if (!hasImages)
    elements.push_back(form::note("images", "Needs real window images, on the Permissions tab."));
}

void addPreview(Elements& elements, Preferences& preferences) {
  const bool shows = preferences.value(preference::previewOnHover);
  const double size = preferences.previewSize();
  elements.push_back(form::section("Hover preview"));
  elements.push_back(form::checkBox(preferences, preference::previewOnHover,
                                    "Show a larger preview when hovering a tab"));
  auto slider = form::slider(preferences, preference::previewSize,
                             {.minimum = 160, .maximum = 640, .value = size});
  slider.isEnabled = shows;
  elements.push_back(form::row("Preview size", std::move(slider)));
  elements.push_back(form::note(
      "previewSize",
      shows ? fmt::format("{:.0f} pt wide. The height follows each window's own shape, and the "
                          "preview appears on whichever side keeps it on screen.",
                          size)
            : "Turn the preview on to change its size."));
}

void addAnimation(Elements& elements, Preferences& preferences, const Texts& texts) {
  const auto duration = preferences.animationDuration();
  elements.push_back(form::section("Animation"));
  elements.push_back(
      form::checkBox(preferences, preference::animateFlight, "Fly the window to its tab"));
  elements.push_back(form::row(
      "Duration",
      form::slider(preferences, preference::animationDuration,
                   {.minimum = 0.1, .maximum = 1.2, .value = duration, .tickMarks = 12})));
  elements.push_back(
      form::note("duration", fmt::format("Left is faster. Currently {:.2f} seconds.", duration)));
  if (preferences.mechanism() == Mechanism::minimize)
    elements.push_back(form::note("minimize", texts.minimizeFlightNote));
}

}  // namespace

FormPane appearancePane(Preferences& preferences, const Texts& texts) {
  FormPane pane{"Appearance", {}};
  addTabs(pane.elements, preferences);
  addPreview(pane.elements, preferences);
  addAnimation(pane.elements, preferences, texts);
  return pane;
}

}  // namespace pellow
