#include "base/file_attributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "base/string_table.h"
#include "base/text.h"

namespace vellum {
namespace {

/// Names of attributes; those that the system keeps for itself are not ours to copy.
std::vector<std::string> attribute_names(const std::filesystem::path& file) {
  std::vector<std::string> names;
  const ssize_t room = listxattr(file.c_str(), nullptr, 0);
  if (room <= 0) return names;
  std::string list(static_cast<std::size_t>(room), '\0');
  const ssize_t length = listxattr(file.c_str(), list.data(), list.size());
  list.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  for (std::size_t at = 0; at < list.size();) {
    const std::string name = list.c_str() + at;
    at += name.size() + 1;
    if (!name.starts_with("security.") && !name.starts_with("trusted.")) names.push_back(name);
  }
  return names;
}

bool copy_attribute(const std::filesystem::path& from, int to, const std::string& name) {
  const ssize_t room = getxattr(from.c_str(), name.c_str(), nullptr, 0);
  if (room < 0) return errno == ENODATA;
  std::string value(static_cast<std::size_t>(room), '\0');
  const ssize_t length = getxattr(from.c_str(), name.c_str(), value.data(), value.size());
  return length >= 0 && fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(length), 0) == 0;
}

}  // namespace

bool take_attributes(int descriptor, const std::filesystem::path& like, const struct stat& status,
                     std::vector<std::string>& told) {
  struct stat own {};
  if (fstat(descriptor, &own) != 0) return false;
  // Giving a file away clears bits of its permissions: they come behind.
  const bool owned =
      (own.st_uid == status.st_uid && own.st_gid == status.st_gid) ||
      fchown(descriptor, status.st_uid, status.st_gid) == 0 ||
      (fchown(descriptor, static_cast<uid_t>(-1), status.st_gid) == 0 && own.st_uid == status.st_uid);
  if (!owned) told.emplace_back(string_text(StringId::OwnerLost));
  if (fchmod(descriptor, status.st_mode & 07777) != 0) return false;
  std::string lost;
  for (const std::string& name : attribute_names(like))
    if (!copy_attribute(like, descriptor, name)) lost += (lost.empty() ? "" : ", ") + name;
  if (!lost.empty()) told.push_back(with_value(string_text(StringId::AttributesLost), lost));
  return true;
}

}  // namespace vellum
