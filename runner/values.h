// What expressions print, for people and for programs.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "runner/operand.h"

namespace runner {

// kJson: one object a line. kCsv: a table whose fields are quoted where RFC 4180 wants that.
enum class ValueFormat { kText, kJson, kCsv };

// What the expressions came to on one picture.
struct PageValues {
  size_t page = 0;            // from 1; 0: the file has one
  std::vector<Named> values;  // in their order; a name may come again
  std::optional<bool> truth;  // the last expression's result, where it is boolean
};

// Lines for one file; for kText each begins with `label`, such as "photo.jpg: ". For kCsv the first
// line names the columns: file, page, those of the values, error. `file` is its name, null: there
// is none.
std::string FormatValues(const std::string* file, const std::string& label,
                         std::span<const PageValues> pages, ValueFormat format);

// The line for a file that failed. For kCsv it has as many fields as `columns`, a line that names
// them; for kText it is empty.
std::string FormatFailure(const std::string& file, const std::string& why, ValueFormat format,
                          const std::string& columns);

}  // namespace runner
