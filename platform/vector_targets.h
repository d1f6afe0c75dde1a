#ifndef PLATFORM_VECTOR_TARGETS_H_
#define PLATFORM_VECTOR_TARGETS_H_

namespace platform {

// The environment variable that names the best instruction set to use: "scalar", "ssse3", "sse4", "avx2", "avx3"
// or "vbmi". Without it, and with any other word, the best that the processor has is used. Results are the same with
// each of them.
inline constexpr const char* kVectorVariable = "ZEFA_VECTORS";

// Whether shuffles among 128 bytes may be used (AVX-512 VBMI): a level of its own above "avx3", for the few kernels
// that gain by them.
bool HasWideByteTables();

}  // namespace platform

#endif  // PLATFORM_VECTOR_TARGETS_H_
