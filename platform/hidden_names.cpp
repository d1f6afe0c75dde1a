#include "platform/hidden_names.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace platform {
namespace {

// A link of a chain that only grows, so that a signal handler can walk it at any moment. `name` changes only while it
// isn't in use.
struct Slot {
  std::string name;
  std::atomic<bool> used = false;
  Slot* next = nullptr;
};

std::atomic<Slot*> slots = nullptr;
static_assert(std::atomic<Slot*>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void RemoveAll() {
  for (Slot* slot = slots; slot != nullptr; slot = slot->next) {
    if (slot->used) unlink(slot->name.c_str());
  }
}

extern "C" void RemoveAllAndEnd(int signal) {
  const int error = errno;
  RemoveAll();
  errno = error;
  raise(signal);  // comes behind this handler, which is no longer there then
}

void CallAtTheEnd() {
  std::atexit(RemoveAll);
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU}) {
    struct sigaction present {};
    // One that is ignored, as under nohup, ends nothing.
    if (sigaction(signal, nullptr, &present) != 0 || present.sa_handler != SIG_DFL) continue;
    struct sigaction action {};
    action.sa_handler = RemoveAllAndEnd;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace

void AddHiddenName(const std::string& native) {
  static const bool called = (CallAtTheEnd(), true);
  static_cast<void>(called);
  Slot* slot = slots;
  while (slot != nullptr && slot->used) slot = slot->next;
  if (slot == nullptr) {
    slot = new Slot;
    slot->next = slots;
    slots = slot;
  }
  slot->name = native;
  slot->used = true;
}

void ForgetHiddenName(const std::string& native) {
  for (Slot* slot = slots; slot != nullptr; slot = slot->next) {
    if (slot->used && slot->name == native) {
      slot->used = false;
      return;
    }
  }
}

}  // namespace platform
