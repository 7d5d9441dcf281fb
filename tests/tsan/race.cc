// The plugin's own queue, log relay and roads to the main context, with one
// mistake each, which the thread sanitizer must report in spite of all that it
// has been told: `race MISTAKE`. With "none" it must have nothing to say.
#include <glib.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace {

// Says that something has happened without putting anything in order by it.
class Hint {
 public:
  void Give() { given_.store(true, std::memory_order_relaxed); }
  void Await() const {
    while (!given_.load(std::memory_order_relaxed)) std::this_thread::yield();
  }

 private:
  std::atomic<bool> given_{false};
};

void Enqueue(PluginState* state, std::function<void()> task) {
  {
    const std::lock_guard<std::mutex> lock(state->mutex);
    state->tasks.push_back(std::move(task));
  }
  state->cv.notify_one();
}

void DispatchOne() { g_main_context_iteration(nullptr, TRUE); }

// A record on its way to the main thread.
struct Record {
  int figure = 0;
  bool arrived = false;  // of the main thread alone
};

gboolean Deliver(gpointer data) {
  auto* record = static_cast<Record*>(data);
  ++record->figure;
  record->arrived = true;
  return G_SOURCE_REMOVE;
}

void Post(Record* record) {
  g_main_context_invoke_full(nullptr, G_PRIORITY_DEFAULT, Deliver, record,
                             nullptr);
}

void None(PluginState* state) {
  Record record;
  Enqueue(state, [&] {
    state->Log(kLevelInfo, "a line");
    record.figure = 1;
    Post(&record);
  });
  state->log_relay->listening = true;
  while (!record.arrived) DispatchOne();
  state->log_relay->listening = false;
}

void QueueWithoutItsMutex(PluginState* state) {
  Hint running;
  Enqueue(state, [&] { running.Give(); });
  running.Await();
  std::cout << "tasks: " << state->tasks.size() << std::endl;
}

void RelayOnTheWorker(PluginState* state) {
  Hint done;
  Enqueue(state, [&] {
    state->Log(kLevelInfo, "a line");
    if (state->log_relay->listening) state->Log(kLevelInfo, "another");
    done.Give();
  });
  done.Await();
  state->log_relay->listening = true;
  DispatchOne();
}

void SessionOnTheMainThread(PluginState* state) {
  Hint done;
  Enqueue(state, [&] {
    state->session.paused = true;
    done.Give();
  });
  done.Await();
  std::cout << "paused: " << state->session.paused << std::endl;
}

void RecordBehindItsPosting(PluginState* state) {
  Record record;
  Hint done;
  Enqueue(state, [&] {
    Post(&record);
    record.figure = 1;
    done.Give();
  });
  done.Await();
  DispatchOne();
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void(PluginState*)>> mistakes = {
      {"none", None},
      {"queue", QueueWithoutItsMutex},
      {"relay", RelayOnTheWorker},
      {"session", SessionOnTheMainThread},
      {"record", RecordBehindItsPosting}};
  const auto found = mistakes.find(argc == 2 ? argv[1] : "");
  if (found == mistakes.end()) return 2;
  // So that what the worker posts waits for this thread.
  g_main_context_acquire(nullptr);
  {
    PluginState state;
    found->second(&state);
    state.FinishTasks();
  }
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  g_main_context_release(nullptr);
  return 0;
}
