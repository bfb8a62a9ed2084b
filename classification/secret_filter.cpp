#include "classification/secret_filter.h"

#include "classification/secret_filter_kernel.h"

namespace marbelot::secret_filter {

#ifdef MARBELOT_AVX2
Step nextStepAvx2(const char* text, std::size_t size, std::size_t from);

Step nextStep(std::string_view text, std::size_t from) {
  static const bool avx2 = __builtin_cpu_supports("avx2");
  return (avx2 ? nextStepAvx2 : scan)(text.data(), text.size(), from);
}
#else
Step nextStep(std::string_view text, std::size_t from) {
  return scan(text.data(), text.size(), from);
}
#endif

}  // namespace marbelot::secret_filter
