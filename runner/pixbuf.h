// What the image files need of gdk-pixbuf.
#pragma once

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace runner {

struct Unreference {
  void operator()(GdkPixbuf* pixbuf) const { g_object_unref(pixbuf); }
};
using Pixbuf = std::unique_ptr<GdkPixbuf, Unreference>;

inline uint8_t* Row(GdkPixbuf* pixbuf, int y) {
  return gdk_pixbuf_get_pixels(pixbuf) +
         static_cast<size_t>(gdk_pixbuf_get_rowstride(pixbuf)) * static_cast<size_t>(y);
}

// The text of an error, which is freed.
inline std::string TakeMessage(GError* error) {
  if (error == nullptr) return "unknown error";
  std::string message = error->message;
  g_error_free(error);
  return message;
}

}  // namespace runner
