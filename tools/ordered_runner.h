// RunOrdered runs numbered tasks on a pool of threads and hands their
// results back on the calling thread in the order of their numbers, so that
// a batch writes its output in input order however the work is spread.
//
// Memory stays bounded: a worker takes task i only while i is less than
// `window` tasks ahead of the next one to be delivered, so at most `window`
// results wait at any time, whatever the number of tasks.
//
// Thread-safety: `work` runs on the worker threads, several at once, and
// must be safe for that; `deliver` and `tick` run on the calling thread only.
#ifndef ZESTRA_TOOLS_ORDERED_RUNNER_H_
#define ZESTRA_TOOLS_ORDERED_RUNNER_H_

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace zestra_tool {

// Calls work(i) for every i in [0, count) on `jobs` threads and
// deliver(i, result) for each, in increasing i, on the calling thread.
// tick() is called on the calling thread about every `tick_period` while it
// waits, and once after the last delivery.
// REQUIRES: jobs >= 1; work does not throw.
template <class Result, class Work, class Deliver, class Tick>
void RunOrdered(std::size_t count, unsigned jobs, Work work, Deliver deliver, Tick tick,
                std::chrono::milliseconds tick_period = std::chrono::milliseconds(100)) {
  const std::size_t window = static_cast<std::size_t>(jobs) * 4;
  std::vector<std::optional<Result>> slots(window);
  std::mutex mutex;
  std::condition_variable ready;  // a result was stored
  std::condition_variable room;   // a result was delivered
  std::size_t next_task = 0;
  std::size_t next_delivery = 0;

  auto worker = [&] {
    for (;;) {
      std::size_t task;
      {
        std::unique_lock<std::mutex> lock(mutex);
        room.wait(lock, [&] { return next_task >= count || next_task < next_delivery + window; });
        if (next_task >= count) return;
        task = next_task++;
      }
      Result result = work(task);
      {
        std::lock_guard<std::mutex> lock(mutex);
        slots[task % window].emplace(std::move(result));
      }
      ready.notify_one();
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(jobs);
  for (unsigned i = 0; i < jobs; ++i) threads.emplace_back(worker);

  while (next_delivery < count) {
    std::optional<Result> result;
    {
      std::unique_lock<std::mutex> lock(mutex);
      auto& slot = slots[next_delivery % window];
      if (!ready.wait_for(lock, tick_period, [&] { return slot.has_value(); })) {
        lock.unlock();
        tick();
        continue;
      }
      result = std::move(slot);
      slot.reset();
    }
    deliver(next_delivery, *result);
    {
      std::lock_guard<std::mutex> lock(mutex);
      ++next_delivery;
    }
    room.notify_all();
  }
  for (std::thread& thread : threads) thread.join();
  tick();
}

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_ORDERED_RUNNER_H_
