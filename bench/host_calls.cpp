#include "bench/host_calls.h"

#include <map>
#include <memory>

namespace bench {

namespace {

// Plays a plug-in's part on the host. Pictures are opened one inside the other, as editors open
// them, so that a call means the innermost picture that is open.
class Player {
 public:
  Player(host::Host& host, const Work& work)
      : resolver_(host.Resolver()), sources_(work.sources), size_(SizeOf(work)) {
    spare_ = host.NewMemoryBlock(1024);
  }

  // The step that repeats a call of `entry`; empty for calls that it doesn't know.
  std::function<void()> StepFor(const std::string& entry);
  void Begin() {
    next_ = 0;
    made_ = nullptr;
  }
  // Lets go what the calls have made, as the caller of the plug-in does.
  void End() {
    if (made_ != nullptr) host::AdoptHandle<host::Picture>(made_);
    made_ = nullptr;
  }

 private:
  struct Open {
    REALpicture picture;
    bool unlocked;  // its description; the next reference let go is the editor's
  };

  static Size SizeOf(const Work& work) {
    const Picture& first = work.sources.front();
    return {first->Width(), first->Height()};
  }
  template <class Function>
  Function* Entry(const std::string& name) const {
    return reinterpret_cast<Function*>(resolver_(name.c_str()));
  }
  REALpicture NextPicture() {
    if (fresh_) {
      fresh_ = false;
      return made_;
    }
    return sources_[next_ < sources_.size() ? next_++ : sources_.size() - 1].Handle();
  }
  REALobject Innermost() const {
    return open_.empty() ? reinterpret_cast<REALobject>(spare_.Handle())
                         : reinterpret_cast<REALobject>(open_.back().picture);
  }

  REALresolver resolver_;
  std::vector<Picture> sources_;
  Size size_;
  host::Ref<host::MemoryBlock> spare_;
  size_t next_ = 0;             // of the sources, to be opened
  REALpicture made_ = nullptr;  // the output
  bool fresh_ = false;          // made and not yet opened
  std::vector<Open> open_;
  REALpictureDescription description_{};
};

std::function<void()> Player::StepFor(const std::string& entry) {
  if (entry == "REALGetPropValueBool") {
    auto* get = Entry<bool(REALobject, const char*, uint8_t*)>(entry);
    return [this, get] {
      open_.push_back({NextPicture(), false});
      uint8_t value = 0;
      get(Innermost(), "HasAlphaChannel", &value);
    };
  }
  if (entry == "REALLockPictureDescription") {
    auto* lock = Entry<bool(REALpicture, REALpictureDescription*, uint32_t)>(entry);
    const bool rows = sources_.front()->Layout().storage == host::Storage::kRowTable;
    const uint32_t wanted = rows ? kPictureRowTable : kPictureBitmapContext;
    return [this, lock, wanted] { lock(open_.back().picture, &description_, wanted); };
  }
  if (entry == "unlockPictureDescription") {
    auto* unlock = Entry<void(REALpicture)>(entry);
    return [this, unlock] {
      unlock(open_.back().picture);
      open_.back().unlocked = true;
    };
  }
  if (entry == "CGBitmapContextGetData") {
    auto* get = Entry<void*(void*)>(entry);
    return [this, get] { get(description_.pictureData); };
  }
  if (entry == "CGBitmapContextGetAlphaInfo") {
    auto* get = Entry<uint32_t(void*)>(entry);
    return [this, get] { get(description_.pictureData); };
  }
  if (entry.starts_with("CGBitmapContextGet")) {
    auto* get = Entry<size_t(void*)>(entry);
    return [this, get] { get(description_.pictureData); };
  }
  if (entry == "REALLockObject") {
    auto* lock = Entry<void(REALobject)>(entry);
    return [this, lock] { lock(Innermost()); };
  }
  if (entry == "REALUnlockObject") {
    auto* unlock = Entry<void(REALobject)>(entry);
    return [this, unlock] {
      unlock(Innermost());
      if (!open_.empty() && open_.back().unlocked) open_.pop_back();
    };
  }
  if (entry == "newPicture") {
    auto* make = Entry<REALpicture(int32_t, int32_t, int32_t)>(entry);
    return [this, make] {
      made_ = make(size_.width, size_.height, 32);
      fresh_ = true;
    };
  }
  if (entry == "REALPictureClearCache") {
    auto* clear = Entry<void(REALpicture)>(entry);
    return [this, clear] { clear(open_.back().picture); };
  }
  if (entry == "memoryBlockGetPtr") {
    auto* get = Entry<void*(REALmemoryBlock)>(entry);
    return [this, get] { get(spare_.Handle()); };
  }
  if (entry == "memoryBlockGetSize") {
    auto* get = Entry<int32_t(REALmemoryBlock)>(entry);
    return [this, get] { get(spare_.Handle()); };
  }
  return {};
}

}  // namespace

std::function<void()> RepeatHostCalls(Stage& stage, const Work& work) {
  if (work.sources.empty()) return {};
  stage.SetOutput(Output::fresh);
  work.call();  // what is asked once in a process is asked here
  host::FaultInjector& faults = stage.Host().faults;
  faults.StartRecord();
  work.call();
  const std::vector<std::string> record = faults.StopRecord();

  const auto player = std::make_shared<Player>(stage.Host(), work);
  std::vector<std::function<void()>> steps;
  for (const std::string& entry : record) {
    steps.push_back(player->StepFor(entry));
    if (!steps.back()) return {};
  }
  const auto repeat = [player, steps] {
    player->Begin();
    for (const auto& step : steps) step();
    player->End();
  };

  // Only an exact repetition is a yardstick.
  const host::Snapshot before = stage.Host().census.Take();
  faults.StartRecord();
  repeat();
  if (faults.StopRecord() != record) return {};
  if (!stage.Host().census.Difference(before).empty()) return {};
  return repeat;
}

}  // namespace bench
