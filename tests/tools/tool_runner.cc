#include "tools/tool_runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

extern char** environ;

namespace zestra_tool_test {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void WriteFile(const fs::path& path, const std::string& bytes) {
  if (path.has_parent_path()) fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

fs::path ScratchFolder(const std::string& name) {
  const fs::path folder = fs::path(ZESTRA_TEST_SCRATCH) / name;
  fs::remove_all(folder);
  fs::create_directories(folder);
  return folder;
}

ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input, const fs::path& directory,
                uint64_t address_space_bytes) {
  // Standard streams go through files, so that no pipe can fill up while
  // the test waits.
  fs::create_directories(ZESTRA_TEST_SCRATCH);
  std::string folder_template = std::string(ZESTRA_TEST_SCRATCH) + "/run-XXXXXX";
  if (mkdtemp(folder_template.data()) == nullptr) return ToolRun{};
  const fs::path folder = folder_template;
  const fs::path in_path = folder / "in";
  const fs::path out_path = folder / "out";
  const fs::path err_path = folder / "err";
  WriteFile(in_path, input);

  std::vector<std::string> words;
  if (address_space_bytes > 0) words = {"prlimit", "--as=" + std::to_string(address_space_bytes), "--"};
  words.push_back(ZESTRA_TOOL);
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in_path.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());

  ToolRun run;
  pid_t pid = 0;
  if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0) {
    int wait_status = 0;
    waitpid(pid, &wait_status, 0);
    if (WIFEXITED(wait_status)) run.status = WEXITSTATUS(wait_status);
  }
  posix_spawn_file_actions_destroy(&actions);
  run.out = ReadFile(out_path);
  run.err = ReadFile(err_path);
  fs::remove_all(folder);
  return run;
}

}  // namespace zestra_tool_test
