#include "tests/support/sandbox.h"

#include <system_error>

namespace plenvorith::test {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::directory_entry& entry) {
  if (entry.is_symlink()) {
    return "link to " + fs::read_symlink(entry.path()).string();
  }
  if (entry.is_directory()) {
    return "directory";
  }
  return entry.is_regular_file() ? readFile(entry.path()) : "no regular file";
}

}  // namespace

Sandbox::Sandbox() {
  makeDirectory("tmp");
  // A run without root's rights has to be able to write.
  fs::permissions(directory_.path(), fs::perms::all);
  fs::permissions(*this / "tmp", fs::perms::all);
}

Sandbox::~Sandbox() {
  // Only now can what is in it be deleted, whatever the test has forbidden.
  std::error_code ignored;
  fs::permissions(*this / "tmp", fs::perms::all, ignored);
}

fs::path Sandbox::operator/(std::string_view name) const {
  return directory_.path() / name;
}

void Sandbox::write(std::string_view name, std::string_view content) const {
  writeFile(*this / name, content);
}

void Sandbox::makeDirectory(std::string_view name) const {
  fs::create_directory(*this / name);
}

std::string Sandbox::read(std::string_view name) const {
  return readFile(*this / name);
}

DirectoryContent Sandbox::content() const {
  DirectoryContent content;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory_.path())) {
    content[entry.path().lexically_relative(directory_.path())] = contentOf(entry);
  }
  return content;
}

Changes changesBetween(const DirectoryContent& before, const DirectoryContent& after) {
  Changes changes;
  for (const auto& [path, content] : after) {
    const auto old = before.find(path);
    if (old == before.end()) {
      changes.made.push_back(path);
    } else if (old->second != content) {
      changes.changed.push_back(path);
    }
  }
  for (const auto& [path, content] : before) {
    if (!after.contains(path)) {
      changes.removed.push_back(path);
    }
  }
  return changes;
}

}  // namespace plenvorith::test
