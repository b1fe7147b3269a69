#include "base/host.h"

#include <utility>

#include "base/byte_order.h"
#include "base/translation.h"

namespace vellum {
namespace {

/// The four letters of a tag; bytes that are no letters as "?".
std::string tag_letters(std::uint32_t tag) {
  std::uint8_t bytes[4];
  write_be32(bytes, tag);
  std::string letters;
  for (const std::uint8_t byte : bytes) letters += byte > 32 && byte < 127 ? static_cast<char>(byte) : '?';
  return letters;
}

}  // namespace

std::string describe_fault(const Fault& fault) {
  std::string place;
  const auto add = [&place](const std::string& part) { place += (place.empty() ? "" : ", ") + part; };
  if (fault.tag != 0) add(tag_letters(fault.tag));
  if (fault.entry >= 0) add(translated("entry ") + std::to_string(fault.entry + 1));
  if (fault.offset >= 0) add(translated("offset ") + std::to_string(fault.offset));
  if (place.empty()) return fault.reason;
  return fault.reason.empty() ? place : place + ": " + fault.reason;
}

void Host::show(StringId id, StringId title, std::string more) {
  if (message) message({id, title, std::string(string_text(id)), std::move(more), nullptr});
}

void Host::warn(StringId id, int& option, std::string more) {
  if (option != 0 && message) message({id, {}, std::string(string_text(id)), std::move(more), &option});
}

void Host::set_status(std::string_view text) const {
  if (status) status(text);
}

void Host::add_note(std::string_view text) const {
  if (note)
    note(text);
  else
    set_status(text);
}

bool Host::fail(Fault reason) {
  fault = std::move(reason);
  has_fault = true;
  return false;
}

std::string Host::take_fault() {
  if (!std::exchange(has_fault, false)) return {};
  return describe_fault(std::exchange(fault, {}));
}

Progress::Progress(Host& host, std::string_view caption) : host_(host) {
  if (host_.progress_begin) host_.progress_begin(caption);
}

Progress::~Progress() {
  if (host_.progress_end) host_.progress_end();
}

void Progress::step(std::uint64_t done, std::uint64_t total) const {
  if (host_.progress_step) host_.progress_step(done, total);
}

}  // namespace vellum
