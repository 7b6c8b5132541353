#include "tests/faults/expectations.h"

#include <algorithm>

#include "tests/support/fixture.h"

namespace faults {

namespace {

enum Outcome : unsigned {
  kWhole = 1,       // as if nothing had failed
  kFailure = 2,     // what is documented for a picture that can't be opened or made
  kDrawn = 4,       // whole, but of a copy that the host has drawn
  kBlank = 8,       // the same, of a copy that nothing was drawn into
  kEmpty = 16,      // of a picture without pixels
  kUntouched = 32,  // a new picture that nothing was written into
};

// A lock that is refused: of a picture that is read, the host draws a copy, unless it has an alpha
// channel. Where a copy is read anyway, the first lock is refused without a fault, and the rows
// that are then locked to be copied are only copied if that succeeds.
unsigned WhenLockFails(const Case& row, const Opening& opening, Phase phase) {
  if (phase == Phase::kOpened || !opening.Desktop()) return kFailure;
  if (opening.rowsCopied) return kWhole | kFailure | kBlank;
  if (opening.drawn) return kWhole | kFailure;
  if (opening.Alpha()) return kFailure;
  return row.inPlace ? kDrawn | kFailure : unsigned{kDrawn};
}

// In everything that isn't said to be otherwise, a call that fails is left out without harm:
// references and locks given back, cleared caches.
unsigned WhenFailing(const Case& row, const Opening& opening, std::string_view entry, Phase phase) {
  const bool opened = phase == Phase::kOpened;
  if (entry == "unlockPictureDescription" && LockLeftBehindMatters()) {
    return kWhole | kFailure | kDrawn | kBlank | kUntouched;
  }
  // The kind of the application is then found out by which lock is granted.
  if (entry == "pluginObjectType") {
    return opening.Desktop() ? kWhole : row.inPlace ? kWhole | kFailure : kWhole | kDrawn;
  }
  // A picture counts as one without an alpha channel, and so does the new one.
  if (entry == "REALGetPropValueBool") return opening.Alpha() ? kWhole | kDrawn : unsigned{kWhole};
  if (entry == "REALGetPropValueInt") return opening.drawn ? kFailure : unsigned{kWhole};
  if (entry == "REALLockPictureDescription") return WhenLockFails(row, opening, phase);
  if (IsOneOf(entry, {"CGBitmapContextGetWidth", "CGBitmapContextGetHeight"})) {
    return opened ? kUntouched : kEmpty;
  }
  if (IsBitmapContextFunction(entry)) return kFailure;
  if (IsOneOf(entry, {"REALLoadObjectMethod", "pluginPictureGraphicsGetter"}) && !opened) {
    return opening.rowsCopied ? kWhole : kBlank;
  }
  if (entry == "Graphics.DrawPicture") return kBlank;
  const bool needed = IsOneOf(
      entry, {"newPicture", "PluginNewInstance", "Picture.Constructor", "REALLoadObjectMethod",
              "memoryBlockGetPtr", "memoryBlockGetSize", "newMemoryBlock", "REALBuildString",
              "PluginGetStringData", "StringGetCString", "LenB", "REALLoadGlobalMethod"});
  return needed ? kFailure : kWhole;
}

// Where the calls of a missing function would fail one by one, they all do; what is found out from
// several of them, or with a second attempt, isn't found out at all.
unsigned WhenMissing(const Case& row, const Opening& opening, std::string_view entry,
                     const Reference& reference) {
  if (entry == "REALLockObject" || entry == "REALLockPictureDescription") return kFailure;
  // A bundle is linked to these; once it is loaded, it has them.
  if (IsBitmapContextFunction(entry)) return support::PluginIsBundle() ? kWhole : kFailure;
  unsigned outcomes = 0;
  const std::vector<Phase> phases = PhasesOf(row, reference);
  for (size_t i = 0; i < phases.size(); ++i) {
    if (reference.calls[i] == entry) outcomes |= WhenFailing(row, opening, entry, phases[i]);
  }
  // Then the program answers for the size of its blocks, and older functions read strings.
  if (IsOneOf(entry, {"memoryBlockGetSize", "PluginGetStringData"})) outcomes = kWhole;
  return outcomes;
}

void Replace(std::string& text, const std::string& what, const std::string& with) {
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at)) {
    text.replace(at, what.size(), with);
    at += with.size();
  }
}

// A vector picture has no pixels that an outcome could show.
void AddWithoutPixels(Texts& texts) {
  const Texts given = texts;
  for (std::string text : given) {
    for (const Paint& paint : {Paint(Photo), Paint(Other)}) {
      Replace(text, Painted(paint), "5 x 4: no pixels");
    }
    texts.push_back(text);
  }
}

Texts TextsOf(unsigned outcomes, const Case& row, const Reference& reference) {
  Texts texts;
  const auto add = [&](const Texts& more) { texts.insert(texts.end(), more.begin(), more.end()); };
  if ((outcomes & kWhole) != 0) add({reference.whole});
  if ((outcomes & kFailure) != 0) add({row.failure});
  if ((outcomes & kDrawn) != 0) add(reference.drawn);
  if ((outcomes & kBlank) != 0) add(reference.blank);
  if ((outcomes & kEmpty) != 0) add({row.empty.empty() ? row.failure : row.empty});
  if ((outcomes & kUntouched) != 0) add({row.prefix + Painted(White)});
  return texts;
}

Texts Allowed(unsigned outcomes, const Case& row, const Opening& opening,
              const Reference& reference, std::string_view entry) {
  Texts texts;
  const auto exact = row.exactly ? row.exactly(entry) : std::nullopt;
  if (exact) {
    texts = *exact;
  } else {
    texts = TextsOf(outcomes, row, reference);
    if (row.also) {
      for (const std::string& text : row.also(entry)) texts.push_back(text);
    }
  }
  if (opening.Vector()) AddWithoutPixels(texts);
  return texts;
}

}  // namespace

std::vector<Phase> PhasesOf(const Case& row, const Reference& reference) {
  std::vector<Phase> phases;
  int references = 0;
  for (const std::string& call : reference.calls) {
    const bool opened = references >= row.locksBefore + row.sources;
    phases.push_back(opened ? Phase::kOpened : Phase::kOpening);
    if (call == "REALLockObject") ++references;
  }
  return phases;
}

Texts AllowedWhenFailing(const Case& row, const Opening& opening, const Reference& reference,
                         std::string_view entry, Phase phase) {
  return Allowed(WhenFailing(row, opening, entry, phase), row, opening, reference, entry);
}

Texts AllowedWhenMissing(const Case& row, const Opening& opening, const Reference& reference,
                         std::string_view entry) {
  const bool called = std::count(reference.calls.begin(), reference.calls.end(), entry) > 0;
  if (!called) return {reference.whole};
  return Allowed(WhenMissing(row, opening, entry, reference), row, opening, reference, entry);
}

Texts AllowedWithoutMemory(const Case& row, const Opening& opening, const Reference& reference) {
  return Allowed(kFailure, row, opening, reference, "memory");
}

bool Allows(const Texts& allowed, const std::string& text) {
  return std::any_of(allowed.begin(), allowed.end(), [&](const std::string& one) {
    return one.ends_with('*') ? text.starts_with(one.substr(0, one.size() - 1)) : text == one;
  });
}

bool Excuses(std::string_view entry, const Opening& opening, std::string_view line) {
  struct Excuse {
    std::string_view entry;
    std::string_view line;
  };
  static constexpr Excuse kExcuses[] = {
      // What can't be given back stays taken.
      {"REALUnlockObject", "reference not returned"},
      {"REALUnlockObject", "references not returned"},
      {"REALUnlockString", "1 reference not returned"},
      {"PluginDisposeStringData", "1 reference not returned"},
      {"CFRelease", "reference not returned"},
      {"CFRelease", "references not returned"},
      {"DisposeRgn", "1 reference not returned"},
      {"unlockPictureDescription", "description lock not returned"},
      {"unlockPictureDescription", "description locks not returned"},
      {"unlockPictureDescription", "ends while it is locked"},
      // A host that makes pictures but can't construct them keeps the instance.
      {"REALLoadObjectMethod", "1 reference not returned"},
      {"Picture.Constructor", "1 reference not returned"},
      {"SetGWorld", "ended while its graphics world was current"},
      // A refused alpha layout leaves the lock in place.
      {"CGBitmapContextGetAlphaInfo", "description lock not returned"},
      {"CGBitmapContextGetAlphaInfo", "ends while it is locked"},
  };
  // QuickDraw's function that disposes of the region may be the one that isn't found.
  const bool framework = IsQuickDrawFunction(entry) && line.starts_with("Region");
  if (framework && line.ends_with("1 reference not returned")) return true;
  // An old host counts a lock that it refuses, and the lock is undone; one that fails, or isn't
  // there at all, it doesn't count. A host that doesn't tell its version is taken for an old one.
  const bool isnt = line.ends_with("description isn't locked");
  if (entry == "REALGetRBVersion") return isnt;
  const bool lock = entry == "REALLockPictureDescription" || entry == "lockPictureDescription";
  if (lock && opening.Old() && isnt) return true;
  return std::any_of(std::begin(kExcuses), std::end(kExcuses), [&](const Excuse& excuse) {
    return excuse.entry == entry && line.find(excuse.line) != std::string_view::npos;
  });
}

}  // namespace faults
