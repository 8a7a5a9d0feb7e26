// Runs the zestra tool as a separate process for tests, with its standard
// input from a string and its standard output and error captured.
#ifndef ZESTRA_TESTS_TOOLS_TOOL_RUNNER_H_
#define ZESTRA_TESTS_TOOLS_TOOL_RUNNER_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zestra_tool_test {

struct ToolRun {
  int status = -1;  // the exit status; -1 when the tool did not exit normally
  std::string out;  // standard output
  std::string err;  // standard error
};

// Runs the tool with `arguments` (not counting the program name) in
// `directory`, feeding `input` to its standard input. A nonzero
// `address_space_bytes` limits the tool's address space (prlimit --as), so
// that its allocations fail beyond it.
ToolRun RunTool(const std::vector<std::string>& arguments, const std::string& input = "",
                const std::filesystem::path& directory = std::filesystem::current_path(),
                uint64_t address_space_bytes = 0);

// The content of a file; empty when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

// Writes `bytes` to `path`, creating its folders.
void WriteFile(const std::filesystem::path& path, const std::string& bytes);

// A fresh, empty folder for one test below the build's temporary folder.
std::filesystem::path ScratchFolder(const std::string& name);

}  // namespace zestra_tool_test

#endif  // ZESTRA_TESTS_TOOLS_TOOL_RUNNER_H_
