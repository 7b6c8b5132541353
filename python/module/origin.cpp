#include "python/module/origin.h"

#include "python/module/runtime.h"
#include "runner/file_job.h"

namespace pyhost {

SharedOrigin OriginOf(const host::Picture& picture) {
  static const auto kNowhere = std::make_shared<const PictureOrigin>();
  const SharedOrigin origin = std::static_pointer_cast<const PictureOrigin>(picture.Attachment());
  return origin ? origin : kNowhere;
}

void SetOrigin(const host::Ref<host::Picture>& picture, SharedOrigin origin) {
  picture->Attach(std::move(origin));
}

void Inherit(const host::Value& made, const SharedOrigin& origin) {
  const auto* picture = std::get_if<host::Ref<host::Picture>>(&made);
  if (picture != nullptr && *picture && (*picture)->Attachment() == nullptr)
    (*picture)->Attach(origin);
}

SharedOrigin OriginForResults(const host::BoundCall& call) {
  if (call.self && call.self->GetKind() == host::Kind::kPicture)
    return OriginOf(static_cast<const host::Picture&>(*call.self.Get()));
  for (const host::Value& value : call.values)
    if (const auto* picture = std::get_if<host::Ref<host::Picture>>(&value); picture && *picture)
      return OriginOf(**picture);
  return std::make_shared<const PictureOrigin>();
}

void InheritWithin(const host::Ref<host::Instance>& instance) {
  std::vector<host::Value> pictures;
  for (const host::Property& property : instance->Class()->properties)
    if (property.type == host::Type::kPicture)
      pictures.push_back(TheHost().Get(instance, property.name));
  for (const host::Value& value : pictures) {
    const auto* picture = std::get_if<host::Ref<host::Picture>>(&value);
    if (picture == nullptr || !*picture || !OriginOf(**picture)->file) continue;
    const SharedOrigin origin = OriginOf(**picture);
    for (const host::Value& made : pictures) Inherit(made, origin);
    return;
  }
}

runner::Page PageOf(const host::Ref<host::Picture>& picture) {
  runner::Page page{picture, {}};
  const SharedOrigin origin = OriginOf(*picture);
  runner::PutAlphaBack(origin->alpha, origin->width, origin->height, &page);
  return page;
}

}  // namespace pyhost
