#include <algorithm>
#include <cstddef>

#include "bench/measure.h"

namespace bench {

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 == 1) return *middle;
  return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double MedianRatio(const Rounds& of, const Rounds& to) {
  std::vector<double> ratios;
  for (size_t i = 0; i < of.size() && i < to.size(); ++i) ratios.push_back(of[i] / to[i]);
  return Median(std::move(ratios));
}

}  // namespace bench
