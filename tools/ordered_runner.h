// RunOrdered runs numbered tasks on a pool of threads and hands their
// results back on the calling thread in the order of their numbers, so that
// a batch writes its output in input order however the work is spread.
// RunOrderedStream does the same for tasks whose number is not known ahead,
// pulled one after the other from a source (the records of an archive).
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

// Pulls tasks with pull(task) until it returns false, calls work(i, task)
// for the i-th task on `jobs` threads and deliver(i, result) for each, in
// increasing i, on the calling thread. pull runs on the worker threads, one
// at a time, in task order. tick() is called on the calling thread about
// every `tick_period` while it waits, and once after the last delivery.
// REQUIRES: jobs >= 1; pull and work do not throw.
template <class Task, class Result, class Pull, class Work, class Deliver, class Tick>
void RunOrderedStream(unsigned jobs, Pull pull, Work work, Deliver deliver, Tick tick,
                      std::chrono::milliseconds tick_period = std::chrono::milliseconds(100)) {
  const std::size_t window = static_cast<std::size_t>(jobs) * 4;
  std::vector<std::optional<Result>> slots(window);
  std::mutex mutex;
  std::condition_variable ready;  // a result was stored, or the tasks ran out
  std::condition_variable room;   // a result was delivered, or the tasks ran out
  std::size_t next_task = 0;
  std::size_t next_delivery = 0;
  bool exhausted = false;  // pull returned false; next_task is the number of tasks

  auto worker = [&] {
    for (;;) {
      std::size_t index;
      Task task;
      {
        std::unique_lock<std::mutex> lock(mutex);
        room.wait(lock, [&] { return exhausted || next_task < next_delivery + window; });
        if (exhausted) return;
        // Pulling under the lock numbers the tasks in the order they come.
        if (!pull(task)) {
          exhausted = true;
          lock.unlock();
          room.notify_all();
          ready.notify_all();
          return;
        }
        index = next_task++;
      }
      Result result = work(index, task);
      {
        std::lock_guard<std::mutex> lock(mutex);
        slots[index % window].emplace(std::move(result));
      }
      ready.notify_all();
    }
  };
  std::vector<std::thread> threads;
  threads.reserve(jobs);
  for (unsigned i = 0; i < jobs; ++i) threads.emplace_back(worker);

  for (;;) {
    std::optional<Result> result;
    {
      std::unique_lock<std::mutex> lock(mutex);
      auto& slot = slots[next_delivery % window];
      const auto done = [&] { return exhausted && next_delivery >= next_task; };
      if (!ready.wait_for(lock, tick_period, [&] { return slot.has_value() || done(); })) {
        lock.unlock();
        tick();
        continue;
      }
      if (!slot.has_value()) break;  // done
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

// Calls work(i) for every i in [0, count) on `jobs` threads and
// deliver(i, result) for each, in increasing i, on the calling thread;
// tick as above.
// REQUIRES: jobs >= 1; work does not throw.
template <class Result, class Work, class Deliver, class Tick>
void RunOrdered(std::size_t count, unsigned jobs, Work work, Deliver deliver, Tick tick,
                std::chrono::milliseconds tick_period = std::chrono::milliseconds(100)) {
  std::size_t pulled = 0;
  RunOrderedStream<std::size_t, Result>(
      jobs, [&](std::size_t& task) { return pulled < count ? (task = pulled++, true) : false; },
      [&](std::size_t, std::size_t task) { return work(task); }, deliver, tick, tick_period);
}

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_ORDERED_RUNNER_H_
