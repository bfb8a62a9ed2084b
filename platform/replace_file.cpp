// Files that the user chose to write, alike on every system.
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/descriptor.h"
#include "platform/files.h"

namespace marbelot::files {

bool replace(const std::string& path, std::string_view bytes) {
  // A link goes on pointing to its file.
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         std::free);
  const std::string target = real ? real.get() : path;
  const std::size_t slash = target.rfind('/');
  std::string draft =
      (slash == std::string::npos ? "" : target.substr(0, slash + 1)) + ".marbelot-XXXXXX";
  const Descriptor file(::mkstemp(draft.data()));
  if (!file) return false;
  struct stat old {};
  const bool keepsMode = ::stat(target.c_str(), &old) == 0;
  const bool done = (!keepsMode || ::fchmod(file.get(), old.st_mode & 07777) == 0) &&
                    writeFully(file.get(), bytes) && ::fsync(file.get()) == 0 &&
                    ::rename(draft.c_str(), target.c_str()) == 0;
  if (!done) ::unlink(draft.c_str());
  return done;
}

}  // namespace marbelot::files
