// Evaluates call expressions against the plug-in that a host has loaded.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "runner/expression.h"
#include "runner/file_function.h"
#include "runner/files/image_reader.h"
#include "runner/operand.h"

namespace runner {

// A current picture and names with values; statements work on both.
//
// A plain name is `self`, the current picture; a method of Picture, called on the current picture;
// a global method; a class of the plug-in's, whose arguments set its properties before it runs; or
// a name that was given a value. picture("f"), memoryblock("f"), string("f"), cube("f"),
// curves("f") and samples("f") read files.
class Session {
 public:
  // `host` outlives the session.
  Session(host::Host& host, const ImageOptions& images) : runtime(host), imageOptions(images) {}

  // Null: there is none, and methods of pictures can't be called without a picture of their own.
  void SetCurrent(host::Ref<host::Picture> picture) { current = std::move(picture); }
  // Forgets all names and has another current picture.
  void StartOver(host::Ref<host::Picture> picture) {
    defined.clear();
    SetCurrent(std::move(picture));
  }
  const host::Ref<host::Picture>& Current() const { return current; }
  // Whether the latest statement made another picture the current one.
  bool MadePicture() const { return madePicture; }

  // Evaluates one statement. A picture that it comes to becomes the current one; every other result
  // and every byref result is in the list that is returned, and has that name from now on. An
  // assignment to a name gives it the value and does nothing else. Throws Failure.
  std::vector<Named> Run(const Statement& statement);

  // The latest value of a name, in any case; null: there is none.
  const Operand* Find(std::string_view name) const;
  std::vector<std::string> Names() const;

  // Throws Failure for names in the statement that nothing stands behind, without evaluating it.
  // `defined` are names that earlier statements may define; those of this one are added.
  void CheckNames(const Statement& statement, std::vector<std::string>* defined) const;

  // Reads the tables of cube("f") and curves("f") in the statement and warns of what is wrong with
  // them, and of classes that the statement gives no table. So it is done once where copies of this
  // process evaluate the statement later. Throws Failure.
  void Prepare(const Statement& statement);

 private:
  using Arguments = std::vector<std::pair<std::string, Operand>>;
  using Overloads = std::vector<const host::Callable*>;

  Operand Evaluate(const Expression& expression);
  Operand EvaluateCall(const Call& call);
  Operand EvaluateMethod(const Overloads& overloads, const host::Ref<host::Picture>& self,
                         const Call& call);
  Operand ReadFile(const Call& call);
  Arguments EvaluateArguments(const Call& call);
  void Assign(const Statement& statement);
  void AssignPair(const Call& call, const host::Ref<host::Picture>& self, const Operand& value);

  host::Ref<host::Picture> SelfFor(const Call& call);
  void Define(std::string name, Operand operand);
  void Show(std::string name, Operand operand);
  void PrepareExpression(const Expression& expression);
  void CheckExpression(const Expression& expression, const std::vector<std::string>& defined) const;
  [[noreturn]] void FailUnknown(const Call& call, const std::vector<std::string>& more) const;

  host::Host& runtime;
  ImageOptions imageOptions;
  host::Ref<host::Picture> current;
  bool madePicture = false;
  std::vector<Named> defined;
  std::vector<Named> shown;  // by the statement that runs
  ColourTables tables;
};

}  // namespace runner
