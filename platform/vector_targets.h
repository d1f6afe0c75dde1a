#ifndef PLATFORM_VECTOR_TARGETS_H_
#define PLATFORM_VECTOR_TARGETS_H_

namespace platform {

// The environment variable that names the best instruction set to use: "scalar", "ssse3", "sse4", "avx2" or "avx3".
// Without it, and with any other word, the best that the processor has is used. Results are the same with each of them.
inline constexpr const char* kVectorVariable = "ZEFA_VECTORS";

}  // namespace platform

#endif  // PLATFORM_VECTOR_TARGETS_H_
