#include "plugin/tables.h"

// The registered functions: the receiver or object first, then the declared parameters, a get/set
// pair's value last. A `boolean` is one byte, 0 or not 0; a `color` is 0x00RRGGBB; a `byref` is a
// pointer to the caller's variable. A returned handle carries one reference. Each function is
// explained where it is defined.
double ColornessKRT(REALpicture, int32_t);
int8_t ScrollVerticalKRT(REALpicture, int32_t, int8_t, int8_t);
int8_t ScrollHorizontalKRT(REALpicture, int32_t, int8_t, int8_t);
int8_t ScrollKRT(REALpicture, int32_t, int32_t, int8_t, int8_t);
int8_t PictureHasMask(REALpicture);
REALpicture ContrastAbsBrightnessPicture3(REALpicture, double, double, double, double, double,
                                          double);
REALpicture ContrastLinBrightnessPicture3(REALpicture, double, double, double, double, double,
                                          double);
REALpicture ContrastAbsBrightnessPicture1(REALpicture, double, double);
REALpicture ContrastLinBrightnessPicture1(REALpicture, double, double);
REALpicture AbsBrightnessPicture3(REALpicture, double, double, double);
REALpicture LinBrightnessPicture3(REALpicture, double, double, double);
REALpicture AbsBrightnessPicture1(REALpicture, double);
REALpicture LinBrightnessPicture1(REALpicture, double);
REALpicture ContrastPicture1(REALpicture, double);
REALpicture ContrastPicture3(REALpicture, double, double, double);
REALpicture TransformPicture1(REALpicture, double, double);
REALpicture TransformPicture3(REALpicture, double, double, double, double, double, double);
REALpicture InvertPicture(REALpicture, int32_t, int32_t, int32_t, int32_t);
REALpicture InvertPicture2(REALpicture);
REALpicture InvertGrayPicture(REALpicture, int32_t, int32_t, int32_t, int32_t);
REALpicture InvertGrayPicture2(REALpicture);
REALpicture ExtractColorRectangleMaskKRT(REALpicture, int32_t, int32_t, int32_t, int32_t);
REALpicture ExtractColorRectangleMaskKRT2(REALpicture);
REALpicture GetEmbededMask(REALpicture, int8_t);
void SetEmbededMask(REALpicture, int8_t, REALpicture);
int32_t CountColorKRT(REALpicture, uint32_t);
void CountColorsKRT(REALpicture, REALmemoryBlock*, REALmemoryBlock*, REALmemoryBlock*, int32_t*);
REALpicture TransformColorsKRT(REALpicture, REALmemoryBlock, REALmemoryBlock, REALmemoryBlock,
                               REALpicture);
REALpicture ReplaceColorKRT(REALpicture, uint32_t, uint32_t);
REALpicture ExtractColorKRT(REALpicture, uint32_t, uint32_t, uint32_t);
REALpicture SaturationPicture(REALpicture, int32_t);
REALpicture ReplaceRedChannel(REALpicture, REALpicture);
REALpicture ReplaceGreenChannel(REALpicture, REALpicture);
REALpicture ReplaceBlueChannel(REALpicture, REALpicture);
int8_t FindPicture(REALpicture, REALpicture, int32_t*, int32_t*);
int8_t isWhite2(REALpicture);
int8_t isWhite(REALpicture, int32_t, int32_t, int32_t, int32_t);
int8_t isBlack2(REALpicture);
int8_t isBlack(REALpicture, int32_t, int32_t, int32_t, int32_t);
int8_t isGray2(REALpicture, int32_t);
int8_t isGray(REALpicture, int32_t, int32_t, int32_t, int32_t, int32_t);

REALpicture BinaryStringtoPicture(REALstring);
REALstring PicturetoBinaryString(REALpicture);
REALpicture CombinePicturesKRT(REALpicture, REALpicture, REALpicture);
REALpicture MergePicture(REALpicture, REALpicture);
REALpicture TintPicture(REALpicture, uint32_t, uint32_t);
REALpicture RenderSamples(REALmemoryBlock, int32_t, int32_t, int32_t, int32_t, int32_t, uint32_t,
                          uint32_t, uint32_t, int32_t, int8_t);

namespace {

// The address of a function as the records hold it.
#define ENTRY(function) (reinterpret_cast<void*>(&(function)))

constexpr uint32_t kConsoleSafe = kFlagConsoleSafeMarker;
constexpr uint32_t kExtensionFlags = 4;
constexpr int32_t kPictureMethodCount = 40;

REALmethodDefinition gPictureMethods[kPictureMethodCount] = {
    // clang-format off
    {ENTRY(ColornessKRT), nullptr, "ColornessKRT(threshold as integer = 10) as double", 0, {}},
    {ENTRY(ScrollVerticalKRT), nullptr, "ScrollVerticalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", 0, {}},
    {ENTRY(ScrollHorizontalKRT), nullptr, "ScrollHorizontalKRT(delta as integer, wrap as boolean, scrollmask as boolean) as boolean", 0, {}},
    {ENTRY(ScrollKRT), nullptr, "ScrollKRT(deltaX as integer, deltaY as integer, wrap as boolean, scrollmask as boolean) as boolean", 0, {}},
    {ENTRY(PictureHasMask), nullptr, "HasMaskKRT as boolean", kConsoleSafe, {}},
    {ENTRY(ContrastAbsBrightnessPicture3), nullptr, "ChangeContrastBrightnessAbsoluteKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", kConsoleSafe, {}},
    {ENTRY(ContrastLinBrightnessPicture3), nullptr, "ChangeContrastBrightnessLinearKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double, BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", kConsoleSafe, {}},
    {ENTRY(ContrastAbsBrightnessPicture1), nullptr, "ChangeContrastBrightnessAbsoluteKRT(Contrast as double, Brightness as double) as picture", kConsoleSafe, {}},
    {ENTRY(ContrastLinBrightnessPicture1), nullptr, "ChangeContrastBrightnessLinearKRT(Contrast as double, Brightness as double) as picture", kConsoleSafe, {}},
    {ENTRY(AbsBrightnessPicture3), nullptr, "ChangeBrightnessAbsoluteKRT(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", kConsoleSafe, {}},
    {ENTRY(LinBrightnessPicture3), nullptr, "ChangeBrightnessLinearKRT(BrightnessRed as double, BrightnessGreen as double, BrightnessBlue as double) as picture", kConsoleSafe, {}},
    {ENTRY(AbsBrightnessPicture1), nullptr, "ChangeBrightnessAbsoluteKRT(Brightness as double) as picture", kConsoleSafe, {}},
    {ENTRY(LinBrightnessPicture1), nullptr, "ChangeBrightnessLinearKRT(Brightness as double) as picture", kConsoleSafe, {}},
    {ENTRY(ContrastPicture1), nullptr, "ChangeContrastKRT(Contrast as double) as picture", kConsoleSafe, {}},
    {ENTRY(ContrastPicture3), nullptr, "ChangeContrastKRT(ContrastRed as double, ContrastGreen as double, ContrastBlue as double) as picture", kConsoleSafe, {}},
    {ENTRY(TransformPicture1), nullptr, "ChangeCustomKRT(a as double, b as double) as picture", kConsoleSafe, {}},
    {ENTRY(TransformPicture3), nullptr, "ChangeCustomKRT(Ra as double, Rb as double, Ga as double, Gb as double, Ba as double, Bb as double) as picture", kConsoleSafe, {}},
    {ENTRY(InvertPicture), nullptr, "InvertKRT(left as integer,top as integer,width as integer,height as integer) as picture", kConsoleSafe, {}},
    {ENTRY(InvertPicture2), nullptr, "InvertKRT as picture", kConsoleSafe, {}},
    {ENTRY(InvertGrayPicture), nullptr, "InvertGrayKRT(left as integer,top as integer,width as integer,height as integer) as picture", kConsoleSafe, {}},
    {ENTRY(InvertGrayPicture2), nullptr, "InvertGrayKRT as picture", kConsoleSafe, {}},
    {ENTRY(ExtractColorRectangleMaskKRT), nullptr, "ExtractColorRectangleMaskKRT(left as integer,top as integer,width as integer,height as integer) as picture", kConsoleSafe, {}},
    {ENTRY(ExtractColorRectangleMaskKRT2), nullptr, "ExtractColorRectangleMaskKRT as picture", kConsoleSafe, {}},
    {ENTRY(GetEmbededMask), ENTRY(SetEmbededMask), "EmbeddedMaskKRT(swap as boolean) as picture", kConsoleSafe, {}},
    {ENTRY(CountColorKRT), nullptr, "CountColorKRT(col as color) as integer", kConsoleSafe, {}},
    {ENTRY(CountColorsKRT), nullptr, "CountColorsKRT(byref red as memoryblock, byref blue as memoryblock, byref green as memoryblock, byref count as integer)", 0, {}},
    {ENTRY(TransformColorsKRT), nullptr, "TransformColorsKRT(red as memoryblock, blue as memoryblock, green as memoryblock, dest as picture = nil) as picture", 0, {}},
    {ENTRY(ReplaceColorKRT), nullptr, "ReplaceColorKRT(SearchColor as color, ReplaceWithColor as color) as picture", 0, {}},
    {ENTRY(ExtractColorKRT), nullptr, "ExtractColorKRT(SearchColor as color, ReplaceWithColor as color, BackGroundColor as color) as picture", 0, {}},
    {ENTRY(SaturationPicture), nullptr, "ChangeSaturationKRT(Amount as integer) as picture", kConsoleSafe, {}},
    {ENTRY(ReplaceRedChannel), nullptr, "ReplaceRedChannelKRT(RedChannel as picture) as picture", kConsoleSafe, {}},
    {ENTRY(ReplaceGreenChannel), nullptr, "ReplaceGreenChannelKRT(GreenChannel as picture) as picture", kConsoleSafe, {}},
    {ENTRY(ReplaceBlueChannel), nullptr, "ReplaceBlueChannelKRT(BlueChannel as picture) as picture", kConsoleSafe, {}},
    {ENTRY(FindPicture), nullptr, "FindPictureKRT(pic as picture, byref x as integer, byref y as integer) as boolean", kConsoleSafe, {}},
    {ENTRY(isWhite2), nullptr, "isWhiteKRT as boolean", kConsoleSafe, {}},
    {ENTRY(isWhite), nullptr, "isWhiteKRT(left as integer,top as integer,width as integer,height as integer) as boolean", kConsoleSafe, {}},
    {ENTRY(isBlack2), nullptr, "isBlackKRT as boolean", kConsoleSafe, {}},
    {ENTRY(isBlack), nullptr, "isBlackKRT(left as integer,top as integer,width as integer,height as integer) as boolean", kConsoleSafe, {}},
    {ENTRY(isGray2), nullptr, "isGrayKRT(tolerance as integer = 0) as boolean", kConsoleSafe, {}},
    {ENTRY(isGray), nullptr, "isGrayKRT(tolerance as integer, left as integer,top as integer,width as integer,height as integer) as boolean", kConsoleSafe, {}},
    // clang-format on
};

}  // namespace

REALclassDefinition PictureExtension = {
    0,          // version, set for the host at registration
    "Picture",  // extended class
    nullptr,    // super class
    0,          // instance data
    0,          // host
    nullptr,    // constructor
    nullptr,    // destructor
    nullptr,
    0,  // properties
    gPictureMethods,
    kPictureMethodCount,  // methods
    {},                   // unused lists
    kExtensionFlags,      // flags
    nullptr,
    0,  // shared properties
    nullptr,
    0,   // shared methods
    {},  // unused words
};

REALmethodDefinition gGlobalMethods[kGlobalMethodCount] = {
    // clang-format off
    {ENTRY(BinaryStringtoPicture), nullptr, "BinaryStringtoPictureKRT(data as String) as Picture", kConsoleSafe, {}},
    {ENTRY(PicturetoBinaryString), nullptr, "PicturetoBinaryStringKRT(p as picture) as string", kConsoleSafe, {}},
    {ENTRY(CombinePicturesKRT), nullptr, "CombinePicturesKRT(red as picture, blue as picture, green as picture) as picture", kConsoleSafe, {}},
    {ENTRY(MergePicture), nullptr, "MergePictureKRT(source1 as picture, source2 as picture) as picture", kConsoleSafe, {}},
    {ENTRY(TintPicture), nullptr, "TintPictureKRT(source as picture, GreyBase as color, SepiaBase as color) as picture", kConsoleSafe, {}},
    {ENTRY(RenderSamples), nullptr, "RenderSamplesKRT(Samples as memoryblock, SampleCount as integer, Smooth as integer, Width as integer, Height as integer, outlinewidth as integer, BackColor as color=&c88B5C4, ForeColor as color=&c274C5A, OutLineColor as color=&c203F4E, Bits as Integer = 8, AutoScale as boolean = false) as Picture", kConsoleSafe, {}},
    // clang-format on
};
