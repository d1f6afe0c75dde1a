#ifndef APP_ATTEMPT_H_
#define APP_ATTEMPT_H_

#include <new>
#include <stdexcept>

namespace app {

// The result of `step`; false also when memory runs out in it, so that a source that needs more than there is costs
// nothing but itself.
template <typename Step>
bool Attempt(Step step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    return false;
  } catch (const std::length_error&) {
    return false;
  }
}

}  // namespace app

#endif  // APP_ATTEMPT_H_
