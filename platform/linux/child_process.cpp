#include "platform/linux/child_process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/helper_program.h"

namespace marbelot {
namespace {

Descriptor memoryFile() { return Descriptor(::memfd_create("marbelot-child", MFD_CLOEXEC)); }

}  // namespace

std::unique_ptr<ChildProcess> ChildProcess::start(std::vector<std::string> arguments, Ended ended,
                                                  std::string_view input) {
  Result result{-1, memoryFile(), memoryFile()};
  const Descriptor given = memoryFile();
  if (!result.output || !result.errors || !writeFully(given.get(), input) ||
      ::lseek(given.get(), 0, SEEK_SET) != 0)
    return nullptr;
  const pid_t process =
      startProgram({std::move(arguments), {given.get(), result.output.get(), result.errors.get()}});
  if (process < 0) return nullptr;
  Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
  std::unique_ptr<ChildProcess> child(
      new ChildProcess(process, std::move(handle), std::move(result), std::move(ended)));
  if (!child->handle_) return nullptr;
  return child;
}

ChildProcess::ChildProcess(pid_t process, Descriptor handle, Result result, Ended ended)
    : process_(process),
      handle_(std::move(handle)),
      result_(std::move(result)),
      ended_(std::move(ended)) {
  if (!handle_) return;
  notifier_ = std::make_unique<QSocketNotifier>(handle_.get(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] {
    // Its own signal is being handled: it goes when that is over.
    notifier_->setEnabled(false);
    notifier_.release()->deleteLater();
    result_.status = reap();
    const Ended told = std::move(ended_);
    told(std::move(result_));
  });
}

ChildProcess::~ChildProcess() {
  if (handle_ && !notifier_) return;
  kill();
  reap();
}

void ChildProcess::kill() { ::kill(process_, SIGKILL); }

int ChildProcess::reap() const {
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string contents(const Descriptor& file, std::size_t maximumBytes) {
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) return {};
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > maximumBytes || ::lseek(file.get(), 0, SEEK_SET) != 0) return {};
  std::string bytes(size, '\0');
  return readFully(file.get(), bytes.data(), size) ? bytes : std::string();
}

}  // namespace marbelot
