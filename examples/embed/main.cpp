// Inverts a picture as a program in the host's language would: embed PHOTO RESULT.bmp
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <host/host.h>

#include <cstdio>

int main(int count, char** words) try {
  if (count != 3) throw host::Error("embed takes a picture file and the name of a BMP file");
  GdkPixbuf* file = gdk_pixbuf_new_from_file(words[1], nullptr);
  if (file == nullptr) throw host::Error("that picture can't be opened");
  GdkPixbuf* photo = gdk_pixbuf_add_alpha(file, FALSE, 0, 0, 0);
  const int width = gdk_pixbuf_get_width(photo), height = gdk_pixbuf_get_height(photo);

  host::Host host;
  host.LoadPlugin(PICTURE_PLUGIN);
  const host::Ref<host::Picture> picture = host.NewPicture(width, height);
  picture->FromRgba({gdk_pixbuf_read_pixels(photo), gdk_pixbuf_get_byte_length(photo)});
  const host::Callable& invert = host.Method("Picture", "InvertKRT", 0);
  const auto inverted = host.Call<host::Ref<host::Picture>>(invert, picture);
  if (!inverted) throw host::Error("the plug-in gave no picture");

  const std::vector<uint8_t> rgba = inverted->ToRgba();
  GdkPixbuf* result = gdk_pixbuf_new_from_data(rgba.data(), GDK_COLORSPACE_RGB, TRUE, 8, width,
                                               height, 4 * width, nullptr, nullptr);
  const bool saved = gdk_pixbuf_save(result, words[2], "bmp", nullptr, nullptr);
  return saved ? 0 : 1;
} catch (const host::Error& error) {
  std::fprintf(stderr, "embed: %s\n", error.what());
  return 1;
}
