#include "bench/Measured.h"

namespace bench {

std::size_t MeasuredFresh(TParrentInterface* host, std::string_view expression, std::size_t times) {
  std::size_t succeeded = 0;
  for (std::size_t i = 0; i < times; ++i) {
    TStringResolver resolver(host);
    if (resolver.SolveStringOfElements(expression)) ++succeeded;
  }
  return succeeded;
}

std::size_t MeasuredKept(TStringResolver* resolver, std::string_view expression,
                         std::size_t times) {
  std::size_t succeeded = 0;
  for (std::size_t i = 0; i < times; ++i) {
    if (resolver->SolveStringOfElements(expression)) ++succeeded;
  }
  return succeeded;
}

}  // namespace bench
