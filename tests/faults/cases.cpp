#include "tests/faults/cases.h"

#include <algorithm>

#include "tests/support/fixture.h"

namespace faults {

namespace {

std::string_view NameOf(Part part) {
  switch (part) {
    case Part::kMethod:
      return "";
    case Part::kSetter:
      return ", assigned to";
    case Part::kConstructor:
      return "constructor";
    case Part::kDestructor:
      return "destructor";
    case Part::kPropertyGetter:
      return ", read";
    case Part::kPropertySetter:
      return ", set";
  }
  return "";
}

std::vector<Case> AllCases() {
  std::vector<Case> all;
  for (auto* make : {ToneCases, ColourCases, CompositionCases, ScrollCases, StringCases,
                     SampleCases, ExceptionCases, ClassCases}) {
    for (Case& row : make()) all.push_back(std::move(row));
  }
  return all;
}

}  // namespace

std::string Case::Name() const {
  std::string name = className + (className.empty() ? "" : ".") + entry;
  name += NameOf(part);
  return label.empty() ? name : name + ", " + label;
}

const std::vector<Case>& Cases() {
  static const std::vector<Case> cases = AllCases();
  return cases;
}

bool IsOneOf(std::string_view entry, std::initializer_list<std::string_view> entries) {
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

bool IsBitmapContextFunction(std::string_view entry) {
  return entry.starts_with("CGBitmapContext");
}

bool LockLeftBehindMatters() { return support::LockMannerOfTests() != host::LockManner::kNested; }

bool OpensPictures(std::string_view entry) {
  return IsBitmapContextFunction(entry) ||
         (entry == "unlockPictureDescription" && LockLeftBehindMatters()) ||
         IsOneOf(entry, {"pluginObjectType", "REALGetPropValueBool", "REALGetPropValueInt",
                         "REALLockPictureDescription", "newPicture"});
}

bool IsQuickDrawFunction(std::string_view entry) {
  return IsOneOf(entry,
                 {"FSFindFolder", "CFURLCreateFromFSRef", "CFURLCreateCopyAppendingPathComponent",
                  "CFBundleCreate", "CFBundleLoadExecutable", "CFBundleGetFunctionPointerForName",
                  "GetGWorld", "SetGWorld", "NewRgn", "ScrollRect"});
}

}  // namespace faults
