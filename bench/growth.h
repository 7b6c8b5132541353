// How times grow with pictures.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "bench/case.h"
#include "bench/report.h"

namespace bench {

// Times the cases, but for those that differ in layouts alone, on pictures of 0.25 to 64
// megapixels, prints them and gives them back.
nlohmann::json MeasureGrowth(const std::vector<const Case*>& cases, const Plan& plan);

}  // namespace bench
