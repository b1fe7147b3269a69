#include <algorithm>

#include "base/translation.h"
#include "cli/command.h"
#include "cli/document_kinds.h"
#include "cli/frame_options.h"
#include "core/files/open_document.h"
#include "core/files/save_document.h"
#include "operations/manage_actions.h"

namespace vellum::cli {
namespace {

/// What a row works on.
struct Managing {
  DocumentWindow& window;
  FrameList frames;
  Host& host;
  Managed done;

  void add(const Managed& managed) {
    done.changed += managed.changed;
    done.held += managed.held;
  }
};

enum class Outcome { Done, Failed, WrongUsage };

Outcome apply_every(Managing& m, const std::string& value) {
  const auto n = whole_number(value, 1, 1'000'000);
  if (!n) return Outcome::WrongUsage;
  const FrameList every = every_nth(frame_entries(m.window).size(), static_cast<std::size_t>(*n));
  FrameList both;
  std::ranges::set_intersection(m.frames, every, std::back_inserter(both));
  m.frames = both;
  return Outcome::Done;
}

Outcome apply_invert(Managing& m, const std::string&) {
  m.frames = inverted(m.frames, frame_entries(m.window).size());
  return Outcome::Done;
}

/// An action that the dialog has, too.
Outcome apply_action(Managing& m, std::string_view name, const std::string& text) {
  const ManageAction& action = manage_action(name);
  const auto field = manage_field(action, m.window.document.kind);
  if (!field) return Outcome::WrongUsage;
  const FieldValue value = parse_field_value(*field, text);
  if (check_field(*field, value)) return Outcome::WrongUsage;
  const auto done = action.apply(m.window, m.frames, value);
  if (!done) return Outcome::WrongUsage;
  m.add(*done);
  return Outcome::Done;
}

Outcome apply_delay(Managing& m, const std::string& value) {
  if (value.find('/') == std::string::npos) return apply_action(m, "delay", value);
  const auto fraction = number_pair(value, '/', 0, 65535);
  if (!fraction || fraction->second == 0) return Outcome::WrongUsage;
  m.add(set_frame_rate(
      m.window, m.frames,
      {static_cast<std::uint16_t>(fraction->first), static_cast<std::uint16_t>(fraction->second)}));
  return Outcome::Done;
}

Outcome apply_duplicate(Managing& m, const std::string&) {
  m.add(duplicate_frames(m.window, m.frames));
  return Outcome::Done;
}

template <bool Down>
Outcome apply_shift(Managing& m, const std::string&) {
  m.add(shift_frames(m.window, m.frames, Down));
  return Outcome::Done;
}

Outcome apply_delete(Managing& m, const std::string&) {
  const Managed deleted = delete_frames(m.window, m.frames, m.host);
  m.add(deleted);
  return deleted.changed > 0 || m.frames.empty() ? Outcome::Done : Outcome::Failed;
}

template <std::size_t (*Delete)(DocumentWindow&)>
Outcome apply_delete_chunks(Managing& m, const std::string&) {
  Delete(m.window);
  return Outcome::Done;
}

Outcome apply_plays(Managing& m, const std::string& value) {
  const auto plays = whole_number(value, 0, most_plays(m.window.document.kind));
  if (!plays) return Outcome::WrongUsage;
  return set_document_plays(m.window, static_cast<std::uint32_t>(*plays)) ? Outcome::Done : Outcome::Failed;
}

Outcome apply_ticks(Managing& m, const std::string& value) {
  const auto ticks = whole_number(value, 1, INT32_MAX);
  if (!ticks || m.window.document.kind != DocumentKind::MING) return Outcome::WrongUsage;
  std::string reason;
  if (set_ticks(m.window, static_cast<std::uint32_t>(*ticks), m.host, reason)) return Outcome::Done;
  wrong_usage(reason);
  return Outcome::Failed;
}

struct ActionRow {
  const char* option;
  const char* form;  ///< of the value; null: the option has none
  const char* help;  ///< null: option, form and help are those of the dialog's action
  Outcome (*apply)(Managing& managing, const std::string& value);
};

constexpr ActionRow dialog_action(const char* name) { return {name, nullptr, nullptr, nullptr}; }

/// In the order in which they are done. What renumbers the frames comes last.
constexpr ActionRow kActions[] = {
    {"every", "N", "Of these frames only every Nth: frame N, 2N, ...", apply_every},
    {"invert", nullptr, "All other frames instead", apply_invert},
    {"ticks", "N", "Ticks per second of an MNG; the delays keep their time", apply_ticks},
    {"delay", nullptr, nullptr, apply_delay},
    dialog_action("rate"),
    dialog_action("scale-delay"),
    dialog_action("add-delay"),
    dialog_action("total"),
    dialog_action("position"),
    dialog_action("move"),
    dialog_action("align"),
    dialog_action("dispose"),
    dialog_action("blend"),
    {"plays", "N", "How often the animation plays, 0 for ever", apply_plays},
    {"delete-text", nullptr, "Delete all text chunks", apply_delete_chunks<delete_texts>},
    {"only-images", nullptr, "Delete all chunks that images don't need",
     apply_delete_chunks<delete_all_but_images>},
    {"move-up", nullptr, "Move the frames in front of their neighbour", apply_shift<false>},
    {"move-down", nullptr, "Move the frames behind their neighbour", apply_shift<true>},
    {"delete", nullptr, "Delete the frames", apply_delete},
    {"duplicate", nullptr, "Put a copy behind each of the frames", apply_duplicate},
};

struct ManageOptions {
  std::string in, out, frames;
  std::array<std::string, std::size(kActions)> values;
  std::array<bool, std::size(kActions)> given{};
};

int apply_actions(const ManageOptions& options, Managing& managing) {
  for (std::size_t i = 0; i < std::size(kActions); ++i) {
    if (!options.given[i]) continue;
    const ActionRow& row = kActions[i];
    const std::string& value = options.values[i];
    const Outcome outcome =
        row.apply ? row.apply(managing, value) : apply_action(managing, row.option, value);
    if (outcome == Outcome::Done) continue;
    if (outcome == Outcome::Failed) return kFailed;
    wrong_usage("--" + std::string(row.option) + ": \"" + value +
                translated("\" is out of range, or no value for a file of this kind"));
    return kWrongUsage;
  }
  return kDone;
}

int run_manage(const ManageOptions& options, Host& host) {
  if (!name_fits_document(options.out)) return kWrongUsage;
  DocumentWindow window;
  if (!open_document(window, options.in, host)) return kFailed;
  const std::size_t count = frame_entries(window).size();
  if (count == 0 || !is_animation(window.document.kind)) {
    host.show(StringId::NoImagesHere, {}, options.in + " is no animation");
    return kFailed;
  }
  const auto frames = options.frames.empty() ? all_frames(count) : parse_frame_list(options.frames, count);
  if (!frames) {
    wrong_usage(translated("--frames: \"") + options.frames +
                translated("\" is no list of frames from 1 to ") + std::to_string(count));
    return kWrongUsage;
  }
  Managing managing{window, *frames, host, {}};
  if (const int status = apply_actions(options, managing); status != kDone) return status;
  if (managing.done.held > 0)
    host.set_status(filled(StringId::ValuesHeld, {count_text(StringId::OneFrame, managing.done.held)}));
  return save_document(window, options.out, host) ? kDone : kFailed;
}

}  // namespace

Run prepare_manage(CLI::App& app) {
  const auto options = std::make_shared<ManageOptions>();
  app.add_option("IN", options->in, "The animation to read")->required();
  app.add_option("OUT", options->out, "The file to write; may be the same")->required();
  app.add_option("--frames", options->frames, "The frames, counted from 1, as 1,3-5; all of them otherwise")
      ->type_name("LIST");
  for (std::size_t i = 0; i < std::size(kActions); ++i) {
    const ActionRow& row = kActions[i];
    const std::string name = "--" + std::string(row.option);
    const ManageAction* shared = row.help ? nullptr : &manage_action(row.option);
    const auto take = [options, i](const std::string& value) {
      options->values[i] = value;
      options->given[i] = true;
    };
    if (shared || row.form)
      app.add_option_function<std::string>(name, take, shared ? shared->help : row.help)
          ->type_name(shared ? shared->form : row.form);
    else
      app.add_flag_callback(
          name, [take] { take({}); }, row.help);
  }
  return [options](Host& host) { return run_manage(*options, host); };
}

}  // namespace vellum::cli
