// The two filter classes: construction, end, the filter itself, accessors.
#include "tests/faults/cases.h"

namespace faults {

namespace {

using Filter = host::Ref<host::Instance>;

const host::RegisteredClass& ClassOf(const Filter& filter) { return *filter->Class(); }

// With both of its pictures.
Filter FullFilter(Scene& scene, const std::string& className) {
  const Filter filter = scene.Host().New(className);
  scene.Host().Set(filter, "SourcePicture", scene.Make(Photo));
  scene.Host().Set(filter, "DestinationPicture", scene.Make(Other));
  return filter;
}

PictureRef Held(Scene& scene, const Filter& filter, const char* property) {
  const host::Value value = scene.Host().Get(filter, property);
  const auto* picture = std::get_if<PictureRef>(&value);
  return picture == nullptr ? PictureRef() : *picture;
}

std::string TextOfHeld(Scene& scene, const Filter& filter) {
  return Text(Held(scene, filter, "SourcePicture")) + " " +
         Text(Held(scene, filter, "DestinationPicture"));
}

std::string TextOfFactors(Scene& scene, const Filter& filter) {
  std::string text;
  for (const char* name : {"FactorRed", "FactorBlue", "FactorGreen"}) {
    text += Text(std::get<double>(scene.Host().Get(filter, name))) + " ";
  }
  return text;
}

Case Constructs(const std::string& className, bool hasFactors) {
  Case row{className, "", Part::kConstructor};
  row.run = [=](Scene& scene) {
    const Filter filter = scene.Host().NewBare(className);
    scene.During([&] {
      reinterpret_cast<void (*)(REALobject)>(ClassOf(filter).constructor)(filter.Handle());
    });
    return TextOfHeld(scene, filter) + (hasFactors ? " " + TextOfFactors(scene, filter) : "");
  };
  return row;
}

// An end lets go of both pictures, whether or not the host takes them back.
Case Destroys(const std::string& className) {
  Case row{className, "", Part::kDestructor};
  row.run = [=](Scene& scene) {
    const Filter filter = FullFilter(scene, className);
    scene.During([&] {
      reinterpret_cast<void (*)(REALobject)>(ClassOf(filter).destructor)(filter.Handle());
    });
    return TextOfHeld(scene, filter);
  };
  return row;
}

Case Closes(const std::string& className) {
  Case row{className, "Close"};
  row.run = [=](Scene& scene) {
    const Filter filter = FullFilter(scene, className);
    scene.Call(filter);
    return TextOfHeld(scene, filter);
  };
  return row;
}

// A fresh filter, so that nothing but the new picture is in the place of its result.
Case Runs(const std::string& className, bool alphaOutput) {
  Case row{className, "Run as boolean"};
  row.run = [=](Scene& scene) {
    const Filter filter = scene.Host().New(className);
    scene.Host().Set(filter, "SourcePicture", scene.Make(Photo));
    const bool result = scene.Call<bool>(filter);
    return Text(result) + " " + Text(Held(scene, filter, "DestinationPicture"));
  };
  row.failure = "false nil";
  row.prefix = "true ";
  row.sources = row.outputs = 1;
  row.alphaOutput = alphaOutput;
  return row;
}

// With a picture from before: the 3D table lets go of it first, the sepia filter keeps it until a
// new one takes its place.
Case RunsAgain(const std::string& className, bool alphaOutput) {
  Case row = Runs(className, alphaOutput);
  row.label = "again";
  const bool letsGo = alphaOutput;
  row.run = [=](Scene& scene) {
    const Filter filter = FullFilter(scene, className);
    const PictureRef before = Held(scene, filter, "DestinationPicture");
    const bool result = scene.Call<bool>(filter);
    const PictureRef after = Held(scene, filter, "DestinationPicture");
    // The reference that the sepia filter forgets (intended) is given back for it.
    if (!letsGo && result) host::Ref<host::Picture>::Adopt(before.Get());
    return Text(result) + " " + Text(after);
  };
  if (!letsGo) row.failure = "false " + Painted(Other);
  return row;
}

double Accessor(const Filter& filter, const host::Property& property) {
  using Getter = double (*)(REALobject, intptr_t);
  return reinterpret_cast<Getter>(property.getter)(filter.Handle(), property.parameter);
}

Case ReadsFactor(const std::string& name) {
  Case row{"PictureSepiaKRT", name, Part::kPropertyGetter};
  row.run = [=](Scene& scene) {
    const Filter filter = scene.Host().New("PictureSepiaKRT");
    const host::Property* property = scene.Host().registry.FindProperty("PictureSepiaKRT", name);
    return Text(scene.During([&] { return Accessor(filter, *property); }));
  };
  return row;
}

Case SetsFactor(const std::string& name) {
  Case row{"PictureSepiaKRT", name, Part::kPropertySetter};
  row.run = [=](Scene& scene) {
    using Setter = void (*)(REALobject, intptr_t, double);
    const Filter filter = scene.Host().New("PictureSepiaKRT");
    const host::Property* property = scene.Host().registry.FindProperty("PictureSepiaKRT", name);
    scene.During([&] {
      reinterpret_cast<Setter>(property->setter)(filter.Handle(), property->parameter, 0.25);
    });
    return TextOfFactors(scene, filter);
  };
  return row;
}

const char* const kTable = "Table(r as UInt32, g as UInt32, b as UInt32, x as UInt32) as double";

Case ReadsTable() {
  Case row{"PictureLut3DKRT", kTable};
  row.run = [](Scene& scene) {
    return Text(scene.Call<double>(scene.Host().New("PictureLut3DKRT"), 1, 2, 3, 2));
  };
  return row;
}

Case SetsTable() {
  Case row{"PictureLut3DKRT", kTable, Part::kSetter};
  row.run = [](Scene& scene) {
    const Filter filter = scene.Host().New("PictureLut3DKRT");
    scene.Assign(filter, 1, 2, 3, 2, 0.75);
    const host::Callable& table = scene.Host().Method("PictureLut3DKRT", kTable);
    return Text(scene.Host().Call<double>(table, filter, 1, 2, 3, 2));
  };
  return row;
}

}  // namespace

std::vector<Case> ClassCases() {
  std::vector<Case> cases = {ReadsTable(), SetsTable()};
  for (const char* factor : {"FactorRed", "FactorBlue", "FactorGreen"}) {
    cases.push_back(ReadsFactor(factor));
    cases.push_back(SetsFactor(factor));
  }
  for (const bool sepia : {true, false}) {
    const std::string name = sepia ? "PictureSepiaKRT" : "PictureLut3DKRT";
    cases.push_back(Constructs(name, sepia));
    cases.push_back(Destroys(name));
    cases.push_back(Closes(name));
    cases.push_back(Runs(name, !sepia));
    cases.push_back(RunsAgain(name, !sepia));
  }
  return cases;
}

}  // namespace faults
