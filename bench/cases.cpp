#include "bench/case.h"

namespace bench {

const std::vector<Case>& AllCases() {
  static const std::vector<Case> cases = [] {
    std::vector<Case> all;
    for (auto* family : {TonalCases, ColourCases, SearchCases, CompositionCases, ClassCases}) {
      for (Case& made : family()) all.push_back(std::move(made));
    }
    return all;
  }();
  return cases;
}

}  // namespace bench
