#include "hostile/isolated_run.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define ZESTRA_HOSTILE_SANITIZED 1
#define ZESTRA_HOSTILE_LEAK_CHECK 1
#elif defined(__SANITIZE_THREAD__)
#define ZESTRA_HOSTILE_SANITIZED 1
#endif

namespace zestra_hostile {
namespace {

// A field of /proc/self/status ("VmRSS", "VmHWM") in bytes; 0 when absent.
uint64_t StatusBytes(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  const size_t length = std::strlen(field);
  while (std::getline(status, line)) {
    if (line.compare(0, length, field) == 0 && line.size() > length && line[length] == ':') {
      return std::strtoull(line.c_str() + length + 1, nullptr, 10) * 1024;
    }
  }
  return 0;
}

// Sets the peak resident size to the current one (Linux 4.0 and later).
bool ResetPeak() {
  std::ofstream clear_refs("/proc/self/clear_refs");
  clear_refs << "5";
  clear_refs.flush();
  return clear_refs.good();
}

bool WriteAll(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

// Processor time this process has used, user and system, in seconds.
double ProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

[[noreturn]] void RunChild(int fd, const std::function<uint64_t()>& prepare,
                           const std::function<std::string()>& work, uint64_t address_space_headroom) {
  const uint64_t input_bytes = prepare();
  if (address_space_headroom > 0) {
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = StatusBytes("VmSize") + address_space_headroom;
    setrlimit(RLIMIT_AS, &limit);
  }
  const bool measured = ResetPeak();
  const uint64_t before = StatusBytes("VmRSS");
  const double started = ProcessorSeconds();
  std::string failure = work();
  const double seconds = ProcessorSeconds() - started;
  const uint64_t peak = StatusBytes("VmHWM");
  // Report: "<measured> <peak bytes> <input bytes> <seconds>\n<failure>".
  std::ostringstream report;
  report << (measured ? 1 : 0) << ' ' << (peak > before ? peak - before : 0) << ' ' << input_bytes << ' '
         << seconds << '\n'
         << failure;
  int status = WriteAll(fd, report.str()) ? 0 : 2;
#ifdef ZESTRA_HOSTILE_LEAK_CHECK
  if (__lsan_do_recoverable_leak_check() != 0) status = 3;
#endif
  close(fd);
  _exit(status);  // no atexit handlers: they belong to the parent's test run
}

}  // namespace

bool SanitizedBuild() {
#ifdef ZESTRA_HOSTILE_SANITIZED
  return true;
#else
  return false;
#endif
}

uint64_t AddressSpaceBytes() { return StatusBytes("VmSize"); }
uint64_t PeakAddressSpaceBytes() { return StatusBytes("VmPeak"); }

IsolatedResult RunIsolated(const std::function<uint64_t()>& prepare, const std::function<std::string()>& work,
                           uint64_t address_space_headroom) {
  IsolatedResult result;
  int fds[2];
  if (pipe(fds) != 0) {
    result.failure = "pipe failed";
    return result;
  }
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) {
    result.failure = "fork failed";
    return result;
  }
  if (child == 0) {
    close(fds[0]);
    RunChild(fds[1], prepare, work, address_space_headroom);
  }
  close(fds[1]);
  std::string report;
  char chunk[4096];
  ssize_t n;
  while ((n = read(fds[0], chunk, sizeof chunk)) > 0) report.append(chunk, static_cast<size_t>(n));
  close(fds[0]);
  int status = 0;
  waitpid(child, &status, 0);
  result.exited_cleanly = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  std::istringstream parsed(report);
  int measured = 0;
  parsed >> measured >> result.peak_bytes >> result.input_bytes >> result.work_seconds;
  parsed.ignore(1);
  std::getline(parsed, result.failure, '\0');
  result.memory_measured = measured == 1;
  if (!result.exited_cleanly && result.failure.empty()) {
    result.failure = WIFSIGNALED(status) ? "child killed by signal " + std::to_string(WTERMSIG(status))
                                         : "child exit status " + std::to_string(WEXITSTATUS(status));
  }
  return result;
}

}  // namespace zestra_hostile
