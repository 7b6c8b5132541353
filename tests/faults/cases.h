// A row for each registered entry, or several where an entry does its work in several ways: how it
// is called, and what it comes to when something fails.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/scene.h"

namespace faults {

enum class Part { kMethod, kSetter, kConstructor, kDestructor, kPropertyGetter, kPropertySetter };

using Texts = std::vector<std::string>;

struct Case {
  std::string className;  // empty for global methods
  std::string entry;      // declaration as registered, name of a property, or empty
  Part part = Part::kMethod;
  std::string label = {};  // tells several rows of one entry apart

  // The call, and its outcome as a text; an exception is added to it by who calls this.
  std::function<std::string(Scene&)> run = {};
  // The documented outcome where a picture can't be opened or made, or there is no memory.
  std::string failure = {};
  // The outcome where the host says that a picture has no columns or no rows; like failure if
  // empty.
  std::string empty = {};
  // What stands before the text of a picture that was made.
  std::string prefix = {};
  // Outcomes beside these, where a certain host function fails or is missing.
  std::function<Texts(std::string_view failing)> also = {};
  // The only outcomes there are, where something else fails than the opening of pictures.
  std::function<std::optional<Texts>(std::string_view failing)> exactly = {};

  int sources = 0;           // pictures that are opened to be read
  int outputs = 0;           // pictures that are made and handed over
  int locksBefore = 0;       // references taken before the first picture is opened
  bool inPlace = false;      // the first picture is changed, so that no copy of it will do
  bool alphaOutput = false;  // made with an alpha channel where the source has one
  std::vector<std::string> hidden = {};  // what the host must not have for this row

  std::string Name() const;
  // Whether it matters how pictures are opened.
  bool UsesPictures() const { return sources + outputs > 0; }
};

std::vector<Case> ToneCases();
std::vector<Case> ColourCases();
std::vector<Case> CompositionCases();
std::vector<Case> ScrollCases();
std::vector<Case> StringCases();
std::vector<Case> SampleCases();
std::vector<Case> ExceptionCases();
std::vector<Case> ClassCases();

// All of these.
const std::vector<Case>& Cases();

// Whether a host function is one of those that open a picture and tell its size.
bool OpensPictures(std::string_view entry);
// Whether a picture that stays locked can't be locked again, or keeps the pixels that it had.
bool LockLeftBehindMatters();
bool IsOneOf(std::string_view entry, std::initializer_list<std::string_view> entries);
bool IsBitmapContextFunction(std::string_view entry);
bool IsQuickDrawFunction(std::string_view entry);

// A method of Picture that makes a picture of its first one; `arguments` follow it.
template <class... A>
Case MakesPicture(std::string entry, const A&... arguments) {
  Case row{"Picture", std::move(entry)};
  row.run = [=](Scene& scene) {
    return Text(scene.Call<PictureRef>(scene.Make(Photo), arguments...));
  };
  row.failure = "nil";
  row.sources = row.outputs = 1;
  row.alphaOutput = true;
  return row;
}

}  // namespace faults
