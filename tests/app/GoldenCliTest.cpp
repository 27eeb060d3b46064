// Golden cases for the folvant program: each tests/cli/cases/NAME.case holds command lines run in
// order on a scratch copy of a book, each followed by the exit status, standard output and
// standard error it must give. With FOLVANT_UPDATE_GOLDEN=1 the cases are rewritten with what
// the program printed instead, for review with `git diff tests/cli`.
//
//   # a comment (kept as written)         @ empty   (start from a fresh `folvant init`)
//   $ folvant --book BOOK account list    ? 0       (the exit status)
//   > a line of standard output           ! a line of standard error
//   \ no newline at end                   (the line above ends its output without a newline)
//
// BOOK in a command is the scratch book's path; in the outputs that path reads BOOK again, and
// the scratch folder itself (HOME lives there) reads SCRATCH.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace folvant {
namespace {

namespace fs = std::filesystem;

const char kCasesDir[] = FOLVANT_SOURCE_DIR "/tests/cli/cases";
const char kNoNewline[] = "\\ no newline at end";

struct Outcome {
  std::optional<int> status;
  std::string out;
  std::string err;
};

struct Step {
  std::vector<std::string> prelude;  // comment, directive and blank lines before the command
  std::string command;
  Outcome expected;
};

struct Case {
  std::vector<Step> steps;
  std::vector<std::string> trailer;  // lines after the last step's outputs
  bool empty = false;                // start from a fresh book rather than the sample
  std::string error;                 // why the file could not be read, if it could not
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

Case Parse(const std::string& text) {
  Case c;
  std::vector<std::string> pending;
  std::string* last_stream = nullptr;  // the output the previous line added to
  int number = 0;
  for (const std::string& line : Lines(text)) {
    ++number;
    if (line.empty()) {
      pending.push_back(line);
      continue;
    }
    const char kind = line[0];
    if (line.size() > 1 && line[1] != ' ' && kind != '#') {
      c.error =
          "line " + std::to_string(number) + ": a marker and a space begin each line: " + line;
      return c;
    }
    const std::string rest = line.size() > 2 ? line.substr(2) : "";
    Outcome* expected = c.steps.empty() ? nullptr : &c.steps.back().expected;
    if (kind == '$') {
      c.steps.push_back({std::move(pending), rest, {}});
      pending.clear();
      last_stream = nullptr;
      continue;
    }
    if (kind == '#' || kind == '@') {
      if (kind == '@') {
        if (rest != "empty" || !c.steps.empty()) {
          c.error = "line " + std::to_string(number) + ": only \"@ empty\", before any command";
          return c;
        }
        c.empty = true;
      }
      pending.push_back(line);
      continue;
    }
    if (expected == nullptr || !pending.empty()) {
      c.error = "line " + std::to_string(number) + ": an expected output belongs right after its $";
      return c;
    }
    if (kind == '?') {
      expected->status = std::atoi(rest.c_str());
      last_stream = nullptr;
    } else if (kind == '>' || kind == '!') {
      last_stream = kind == '>' ? &expected->out : &expected->err;
      *last_stream += rest + "\n";
    } else if (line == kNoNewline && last_stream != nullptr) {
      last_stream->pop_back();
      last_stream = nullptr;
    } else {
      c.error = "line " + std::to_string(number) + ": unknown line: " + line;
      return c;
    }
  }
  c.trailer = std::move(pending);
  if (c.steps.empty()) c.error = "no command";
  return c;
}

void RenderStream(std::string& into, char marker, const std::string& text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = text.find('\n', begin);
    const std::string line = text.substr(begin, end == std::string::npos ? end : end - begin);
    into += line.empty() ? std::string(1, marker) : std::string(1, marker) + " " + line;
    into += '\n';
    if (end == std::string::npos) {
      into += std::string(kNoNewline) + "\n";
      break;
    }
    begin = end + 1;
  }
}

// The case file as it reads with these outcomes, one per step.
std::string Render(const Case& c, const std::vector<Outcome>& outcomes) {
  std::string text;
  for (std::size_t i = 0; i < c.steps.size(); ++i) {
    for (const std::string& line : c.steps[i].prelude) text += line + "\n";
    text += "$ " + c.steps[i].command + "\n";
    if (outcomes[i].status) text += "? " + std::to_string(*outcomes[i].status) + "\n";
    RenderStream(text, '>', outcomes[i].out);
    RenderStream(text, '!', outcomes[i].err);
  }
  for (const std::string& line : c.trailer) text += line + "\n";
  return text;
}

// A unified-looking line diff from `want` to `got` with three lines of context.
std::string Diff(const std::string& want, const std::string& got) {
  const std::vector<std::string> a = Lines(want), b = Lines(got);
  // Longest common subsequence lengths of the suffixes; the cases are small.
  std::vector<std::vector<int>> lcs(a.size() + 1, std::vector<int>(b.size() + 1, 0));
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      lcs[i][j] = a[i] == b[j] ? lcs[i + 1][j + 1] + 1 : std::max(lcs[i + 1][j], lcs[i][j + 1]);
    }
  }
  std::vector<std::string> edits;  // each line with its ' ', '-' or '+'
  std::size_t i = 0, j = 0;
  while (i < a.size() || j < b.size()) {
    if (i < a.size() && j < b.size() && a[i] == b[j]) {
      edits.push_back(" " + a[i++]);
      ++j;
    } else if (i < a.size() && (j == b.size() || lcs[i + 1][j] >= lcs[i][j + 1])) {
      edits.push_back("-" + a[i++]);
    } else {
      edits.push_back("+" + b[j++]);
    }
  }
  // Show each change with three lines around it; a header starts each group of changes.
  std::vector<bool> shown(edits.size(), false);
  for (std::size_t k = 0; k < edits.size(); ++k) {
    if (edits[k][0] == ' ') continue;
    for (std::size_t n = k >= 3 ? k - 3 : 0; n < std::min(edits.size(), k + 4); ++n) {
      shown[n] = true;
    }
  }
  std::string text = "--- expected\n+++ actual\n";
  std::size_t line_a = 1, line_b = 1;
  for (std::size_t k = 0; k < edits.size(); ++k) {
    if (shown[k] && (k == 0 || !shown[k - 1])) {
      text += "@@ -" + std::to_string(line_a) + " +" + std::to_string(line_b) + " @@\n";
    }
    if (shown[k]) text += edits[k] + "\n";
    line_a += edits[k][0] != '+';
    line_b += edits[k][0] != '-';
  }
  return text;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

bool IsWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// The command with each word BOOK replaced by the scratch book's path.
std::string WithBook(const std::string& command, const std::string& book) {
  std::string result;
  for (std::size_t i = 0; i < command.size();) {
    const bool word = command.compare(i, 4, "BOOK") == 0 &&
                      (i == 0 || !IsWordChar(command[i - 1])) &&
                      (i + 4 >= command.size() || !IsWordChar(command[i + 4]));
    result += word ? book : command.substr(i, 1);
    i += word ? 4 : 1;
  }
  return result;
}

class Scratch {
 public:
  explicit Scratch(const std::string& name)
      : dir_(fs::temp_directory_path() /
             ("folvant-golden-" + name + "-" + std::to_string(::getpid()))) {
    fs::remove_all(dir_);
    fs::create_directories(dir_ / "bin");
    fs::create_directories(dir_ / "home" / ".local" / "share");
    fs::create_symlink(FOLVANT_BINARY, dir_ / "bin" / "folvant");
    // The program's settings come from the environment: the same for every run.
    for (char** entry = environ; *entry != nullptr; ++entry) {
      const std::string variable = *entry;
      const std::string key = variable.substr(0, variable.find('='));
      if (key.rfind("FOLVANT_", 0) != 0 && key.rfind("LC_", 0) != 0 && key.rfind("XDG_", 0) != 0 &&
          key != "LANG" && key != "TZ" && key != "HOME" && key != "PATH") {
        env_.push_back(variable);
      }
    }
    const std::string home = (dir_ / "home").string();
    for (const std::string& variable :
         {std::string("TZ=America/New_York"), std::string("LC_ALL=C.UTF-8"),
          std::string("FOLVANT_TODAY=2026-07-15"), "HOME=" + home,
          "XDG_DATA_HOME=" + home + "/.local/share", "XDG_CONFIG_HOME=" + home + "/.config",
          "PATH=" + (dir_ / "bin").string() + ":/usr/bin:/bin"}) {
      env_.push_back(variable);
    }
  }
  ~Scratch() { fs::remove_all(dir_); }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  std::string Book() const { return (dir_ / "book").string(); }
  const fs::path& Dir() const { return dir_; }

  // Runs one command line through /bin/sh in the scratch folder, with no input.
  Outcome Run(const std::string& command) {
    const std::string line = WithBook(command, Book());
    const std::string out_file = (dir_ / "stdout").string(), err_file = (dir_ / "stderr").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 2, err_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addchdir_np(&actions, dir_.c_str());
    std::vector<char*> argv = {const_cast<char*>("/bin/sh"), const_cast<char*>("-c"),
                               const_cast<char*>(line.c_str()), nullptr};
    std::vector<char*> envp;
    for (std::string& variable : env_) envp.push_back(variable.data());
    envp.push_back(nullptr);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, "/bin/sh", &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    Outcome outcome;
    int raw = 0;
    if (spawned != 0 || ::waitpid(pid, &raw, 0) != pid) {
      outcome.status = -1;
      outcome.err = std::string("could not run /bin/sh: ") + std::strerror(spawned);
      return outcome;
    }
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    outcome.out = Normalized(ReadText(out_file));
    outcome.err = Normalized(ReadText(err_file));
    return outcome;
  }

 private:
  std::string Normalized(std::string text) const {
    ReplaceAll(text, Book(), "BOOK");
    ReplaceAll(text, dir_.string(), "SCRATCH");
    return text;
  }

  fs::path dir_;
  std::vector<std::string> env_;
};

std::vector<std::string> CaseNames() {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& file : fs::directory_iterator(kCasesDir, error)) {
    if (file.path().extension() == ".case") names.push_back(file.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class CliCase : public ::testing::TestWithParam<std::string> {};

TEST_P(CliCase, Run) {
  const fs::path path = fs::path(kCasesDir) / (GetParam() + ".case");
  const std::string text = ReadText(path);
  const Case c = Parse(text);
  ASSERT_TRUE(c.error.empty()) << path.string() << ": " << c.error;

  Scratch scratch(GetParam());
  if (c.empty) {
    const Outcome init = scratch.Run("folvant init BOOK");
    ASSERT_EQ(init.status, 0) << init.err;
  } else {
    fs::copy(FOLVANT_SOURCE_DIR "/data/sample-book", scratch.Book(), fs::copy_options::recursive);
  }
  std::vector<Outcome> actual, expected;
  for (const Step& step : c.steps) {
    actual.push_back(scratch.Run(step.command));
    expected.push_back(step.expected);
  }
  const std::string got = Render(c, actual);

  const char* update = std::getenv("FOLVANT_UPDATE_GOLDEN");
  if (update != nullptr && std::string(update) == "1") {
    if (got != text) {
      std::ofstream(path, std::ios::binary) << got;
      std::cout << "rewrote " << path.string() << "\n";
    }
    return;
  }
  const std::string want = Render(c, expected);
  if (got != want) {
    ADD_FAILURE() << path.string() << " differs from what the program printed:\n"
                  << Diff(want, got)
                  << "(FOLVANT_UPDATE_GOLDEN=1 rewrites the case with the actual output)";
  }
}

std::string TestName(const ::testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !IsWordChar(c); }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Golden, CliCase, ::testing::ValuesIn(CaseNames()), TestName);

}  // namespace
}  // namespace folvant
