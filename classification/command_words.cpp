#include "classification/command_words.h"

#include <algorithm>

#include "classification/line_shapes.h"

namespace marbelot {
namespace {

// First words that make a line a command. Sorted; the second list holds those that are everyday
// words too, which need more to be believed.
// clang-format off
constexpr std::string_view commands[] = {
    "adb", "addgroup", "adduser", "ansible", "ansible-playbook", "apk", "apt", "apt-cache", "apt-get",
    "apt-key", "aptitude", "arp", "awk", "aws", "az", "base64", "basename", "bash", "bazel", "blkid",
    "bower", "brew", "bun", "bundle", "bunzip2", "bzip2", "cargo", "cd", "certbot", "chgrp",
    "chkconfig", "chmod", "chown", "chroot", "chsh", "cksum", "clang", "clang++", "cmake", "cmp",
    "composer", "conda", "cp", "crontab", "ctest", "curl", "dd", "delgroup", "deluser", "deno",
    "depmod", "df", "dhclient", "diff", "dig", "dir", "dirname", "dmesg", "dmidecode", "dnf",
    "docker", "docker-compose", "dotnet", "dpkg", "du", "e2fsck", "echo", "egrep", "emacs", "env",
    "eslint", "ethtool", "exit", "fdisk", "ffmpeg", "fgrep", "firewall-cmd", "flask", "flutter",
    "fsck", "g++", "gawk", "gcc", "gcloud", "gdb", "gem", "getenforce", "getent", "gh", "git",
    "gofmt", "gpg", "gradle", "grep", "groupadd", "gulp", "gunzip", "gzip", "hdparm", "helm",
    "heroku", "hexdump", "hg", "hostname", "hostnamectl", "htop", "httpd", "hwclock", "iconv",
    "ifconfig", "ifdown", "ifup", "insmod", "iostat", "ip", "ipconfig", "iptables", "iwconfig",
    "java", "javac", "jest", "journalctl", "jq", "jupyter", "keytool", "killall", "kubeadm",
    "kubectl", "ldconfig", "ldd", "lein", "ln", "logout", "losetup", "ls", "lsblk", "lscpu", "lsmod",
    "lsof", "lspci", "lsusb", "lvcreate", "lvs", "md5sum", "meson", "minikube", "mkdir", "mkfifo",
    "mkfs", "mkfs.ext4", "mknod", "mkswap", "mktemp", "modinfo", "modprobe", "mongo", "mongod", "mv",
    "mvn", "mysql", "mysqldump", "nano", "nc", "ncdu", "netplan", "netstat", "nginx", "ninja", "nm",
    "nmap", "nmcli", "node", "nohup", "npm", "npx", "nslookup", "ntpdate", "nvidia-smi", "nvm",
    "objdump", "openssl", "pacman", "parted", "passwd", "perl", "pg_dump", "pgrep", "php", "pidof",
    "pip", "pip3", "pipenv", "pipx", "pkill", "pm2", "pnpm", "podman", "poetry", "poweroff",
    "printenv", "printf", "ps", "psql", "pvcreate", "pwd", "pyenv", "pytest", "python", "python2",
    "python3", "qemu-img", "rails", "rake", "rbenv", "readelf", "readlink", "realpath", "reboot",
    "redis-cli", "renice", "rm", "rmdir", "rpm", "rsync", "ruby", "rustc", "rustup", "sbt", "scp",
    "sed", "setenforce", "sftp", "sh", "sha256sum", "shutdown", "smartctl", "snap", "sqlite3", "ss",
    "ssh", "ssh-copy-id", "ssh-keygen", "stat", "strace", "stty", "su", "sudo", "svn", "swapoff",
    "swapon", "swift", "sysctl", "systemctl", "tar", "tcpdump", "tee", "terraform", "tmux", "tox",
    "tr", "traceroute", "tsc", "ufw", "umount", "uname", "uniq", "unset", "unzip", "updatedb",
    "uptime", "useradd", "userdel", "usermod", "uv", "vagrant", "valgrind", "vi", "vim", "virtualenv",
    "visudo", "vite", "vmstat", "wc", "wget", "whereis", "whoami", "xargs", "xcodebuild", "xcrun",
    "xxd", "xz", "yarn", "yum", "zcat", "zfs", "zip", "zpool", "zsh", "zypper"};
constexpr std::string_view everydayCommands[] = {
    "alias", "cat", "clear", "code", "cut", "date", "export", "fetch", "file", "find", "free", "go",
    "groups", "halt", "head", "history", "host", "id", "install", "join", "kill", "last", "less",
    "locate", "login", "mail", "make", "man", "more", "mount", "open", "paste", "patch", "ping",
    "read", "screen", "service", "set", "sleep", "sort", "source", "split", "start", "strings",
    "sync", "tail", "test", "time", "top", "touch", "tree", "type", "view", "wait", "watch", "which",
    "who"};
// clang-format on
static_assert(std::is_sorted(std::begin(commands), std::end(commands)));
static_assert(std::is_sorted(std::begin(everydayCommands), std::end(everydayCommands)));

constexpr std::string_view pathOpeners[] = {"./",    "../",   "~/",    "/usr/",  "/bin/", "/sbin/",
                                            "/opt/", "/lib/", "/etc/", "/home/", "/var/", "/tmp/",
                                            "/dev/", "/mnt/", "/srv/", "/root/"};

template <std::size_t size>
bool isOneOf(std::string_view word, const std::string_view (&words)[size]) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

template <std::size_t size>
bool isOneOfSorted(std::string_view word, const std::string_view (&words)[size]) {
  return std::binary_search(std::begin(words), std::end(words), word);
}

// NAME=value, as it may stand before a command.
bool isAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  return equals != word.npos && equals > 0 &&
         std::all_of(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(equals),
                     [](char c) { return isUpper(c) || isDigit(c) || c == '_'; });
}

// "if=/dev/zero", "https://…", "ann@host", "host:file" and "eth0" are no words of a sentence.
bool isTechnical(std::string_view word) {
  const std::size_t mark = word.find_first_of("=:@");
  if (mark != word.npos) return mark > 0 && mark + 1 < word.size();
  return std::any_of(word.begin(), word.end(), isDigit);
}

bool isFileName(std::string_view word) {
  const std::size_t dot = word.rfind('.');
  return dot != word.npos && dot > 0 && dot + 1 < word.size() && isName(word[dot - 1]) &&
         isName(word[dot + 1]) && word.find_first_of("@:") == word.npos && !isDigit(word.front());
}

bool isPath(std::string_view word) {
  if (word == "." || word == ".." || word == "~" || word == "/") return true;
  if (word.starts_with('/')) return word.size() > 1 && isName(word[1]);
  return word.starts_with("./") || word.starts_with("../") || word.starts_with("~/");
}

bool isOption(std::string_view word) {
  if (word.starts_with("--")) word.remove_prefix(1);
  return word.size() > 1 && word.front() == '-' && isName(word[1]);
}

bool mayNameProgram(std::string_view word) {
  return isLower(word.front()) && word.back() != '.' &&
         std::all_of(word.begin(), word.end(), [](char c) {
           return isLower(c) || isDigit(c) || c == '-' || c == '_' || c == '.';
         });
}

}  // namespace

Words::Words(std::string_view line) {
  constexpr std::size_t lookAt = 1000;
  line = line.substr(0, lookAt);
  while (count_ < words_.size() && !line.empty()) {
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(std::min(line.size(), word.size() + 1));
    if (!word.empty()) words_[count_++] = word;
  }
}

FirstWord judgeFirstWord(std::string_view word) {
  if (word.empty()) return FirstWord::unlikely;
  constexpr std::string_view control = "ctl";  // "systemctl", "loginctl" …
  const bool controls = word.size() > control.size() && word.ends_with(control);
  if (controls || startsAsPath(word) || isOneOfSorted(word, commands)) return FirstWord::command;
  if (isOneOfSorted(word, everydayCommands) || isAssignment(word)) return FirstWord::everyday;
  return mayNameProgram(word) ? FirstWord::possible : FirstWord::unlikely;
}

bool startsAsPath(std::string_view word) {
  return std::any_of(std::begin(pathOpeners), std::end(pathOpeners),
                     [word](std::string_view start) { return word.starts_with(start); });
}

bool isTerse(std::string_view command) {
  constexpr std::string_view terse[] = {
      "adduser",  "cd",      "chgrp",   "chkconfig", "chmod",    "chown",   "cp",
      "delgroup", "deluser", "df",      "du",        "groupadd", "ifdown",  "ifup",
      "insmod",   "killall", "ln",      "ls",        "mkdir",    "mkfs",    "mktemp",
      "modprobe", "mv",      "npx",     "passwd",    "pgrep",    "pkill",   "printenv",
      "ps",       "rm",      "rmdir",   "rmmod",     "su",       "swapoff", "swapon",
      "umount",   "useradd", "userdel", "usermod",   "wc",       "whereis"};
  return command.ends_with("ctl") || isOneOf(command, terse);
}

bool isWrapper(std::string_view command) {
  constexpr std::string_view wrappers[] = {"env",  "gdb",      "man",   "nohup", "strace", "sudo",
                                           "time", "valgrind", "watch", "which", "xargs"};
  return isOneOf(command, wrappers);
}

bool showsFile(std::string_view command) {
  constexpr std::string_view showers[] = {"awk",  "cat", "diff", "egrep", "fgrep", "git", "grep",
                                          "head", "hg",  "less", "more",  "sed",   "svn", "tail"};
  return isOneOf(command, showers);
}

bool isSubcommand(std::string_view word) {
  constexpr std::string_view subcommands[] = {
      "add",          "addr",    "apply",  "attach",   "auth",    "branch",   "build",
      "checkout",     "ci",      "clean",  "clone",    "commit",  "compose",  "config",
      "create",       "delete",  "deploy", "describe", "dev",     "diff",     "disable",
      "dist-upgrade", "enable",  "exec",   "fetch",    "fmt",     "generate", "get",
      "grep",         "images",  "init",   "install",  "lint",    "list",     "log",
      "login",        "logs",    "ls",     "merge",    "migrate", "outdated", "package",
      "ps",           "publish", "pull",   "push",     "rebase",  "reload",   "remote",
      "remove",       "renew",   "reset",  "restart",  "run",     "search",   "serve",
      "show",         "start",   "stash",  "status",   "stop",    "switch",   "test",
      "uninstall",    "up",      "update", "upgrade",  "version"};
  return isOneOf(word, subcommands);
}

bool isFunctionWord(std::string_view word) {
  constexpr std::string_view wordTable[] = {
      "a",    "also", "and", "are", "as",   "at",   "be",   "but",  "can",   "did", "does",
      "for",  "from", "had", "has", "have", "i",    "in",   "is",   "it",    "me",  "my",
      "not",  "of",   "on",  "or",  "our",  "out",  "so",   "sure", "that",  "the", "then",
      "this", "to",   "up",  "was", "we",   "were", "will", "with", "works", "you", "your"};
  return isOneOf(word, wordTable);
}

bool holdsOperator(const Words& words) {
  constexpr std::string_view operators[] = {"|", "||", "&&", ">>", "<<", "2>&1", "&>", "\\"};
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string_view word = words[i], next = words[i + 1];
    const bool isVariable = word.size() > 1 && word.front() == '$' && !isDigit(word[1]);
    if (isVariable || isOneOf(word, operators)) return true;
    if ((word == ">" || word == "<") && (isPath(next) || isFileName(next))) return true;
  }
  return false;
}

bool holdsOption(const Words& words) { return words.anyBehindFirst(isOption); }

bool holdsFileName(const Words& words) { return words.anyBehindFirst(isFileName); }

bool holdsTechnicalWord(const Words& words) { return words.anyBehindFirst(isTechnical); }

bool holdsShellWords(const Words& words) {
  constexpr std::size_t fewWords = 3;
  const auto isOperand = [](std::string_view word) {
    return isOption(word) || isPath(word) || isAssignment(word);
  };
  if (isOperand(words[1]) || (words.size() == 2 && isFileName(words[1]))) return true;
  if (words.size() <= fewWords && words.anyBehindFirst(isOperand)) return true;
  return holdsOperator(words);
}

}  // namespace marbelot
