// RunIsolated runs a piece of work in a child process and measures the
// memory it needs: the child's peak resident size during the work, less its
// resident size just before. A crash, a sanitizer report or a leak in the
// child shows as a failed run instead of taking the test program down.
//
// Thread-safety: forks; call it from a single-threaded test program.
#ifndef ZESTRA_TESTS_HOSTILE_ISOLATED_RUN_H_
#define ZESTRA_TESTS_HOSTILE_ISOLATED_RUN_H_

#include <cstdint>
#include <functional>
#include <string>

namespace zestra_hostile {

// What a child reported.
struct IsolatedResult {
  // The child exited with status 0 (no crash, no signal, no leak found).
  bool exited_cleanly = false;
  // What `work` returned: empty when its checks held, else what failed.
  std::string failure;
  // Peak resident bytes during the work above the resident size before it;
  // 0 when the system cannot reset the peak (memory_measured is false).
  uint64_t peak_bytes = 0;
  bool memory_measured = false;
  // What `prepare` returned: the size of the input it built.
  uint64_t input_bytes = 0;
  // Processor time of the work (user and system), in seconds.
  double work_seconds = 0;
};

// In a child process: runs `prepare` (building the input, not measured; it
// returns the input's size in bytes), resets the peak resident size, runs
// `work`, and reports, with the processor time `work` took. `work` returns an empty string when its checks held,
// or a description of what failed.
// A nonzero `address_space_headroom` limits the child's address space
// (RLIMIT_AS) to what it uses once `prepare` is done plus that many bytes,
// so that the allocations of `work` fail beyond it.
IsolatedResult RunIsolated(const std::function<uint64_t()>& prepare, const std::function<std::string()>& work,
                           uint64_t address_space_headroom = 0);

// The address space the calling process uses now, and the most it has used
// (VmSize and VmPeak), in bytes.
uint64_t AddressSpaceBytes();
uint64_t PeakAddressSpaceBytes();

// True in a build with address or thread sanitizers, whose shadow memory,
// red zones and quarantine make the resident size no measure of the
// library's own needs.
bool SanitizedBuild();

}  // namespace zestra_hostile

#endif  // ZESTRA_TESTS_HOSTILE_ISOLATED_RUN_H_
