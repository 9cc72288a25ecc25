#include "report/page_frame.h"

#include <glib.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "base/output_file.h"
#include "report/table.h"

namespace vek::reporting {

std::string without_markup(const std::string &json) {
  std::string out;
  out.reserve(json.size() + json.size() / 100);
  for (const char character : json) {
    switch (character) {
      case '<':
        out += "\\u003c";
        break;
      case '>':
        out += "\\u003e";
        break;
      case '&':
        out += "\\u0026";
        break;
      default:
        out += character;
    }
  }
  return out;
}

std::string hash_of(std::string_view text) {
  std::array<guint8, 32> digest{};
  gsize size = digest.size();
  GChecksum *checksum_P = g_checksum_new(G_CHECKSUM_SHA256);
  g_checksum_update(checksum_P, reinterpret_cast<const guchar *>(text.data()),
                    static_cast<gssize>(text.size()));
  g_checksum_get_digest(checksum_P, digest.data(), &size);
  g_checksum_free(checksum_P);
  gchar *encoded_P = g_base64_encode(digest.data(), size);
  const std::string hash = "'sha256-" + std::string(encoded_P) + "'";
  g_free(encoded_P);
  return hash;
}

std::string filled(
    std::string_view frame,
    const std::vector<std::pair<std::string_view, std::string_view>> &parts) {
  std::string page;
  for (const auto &[place, text] : parts) {
    const std::size_t found = frame.find(place);
    page += frame.substr(0, found);
    page += text;
    frame.remove_prefix(found + place.size());
  }
  page += frame;
  return page;
}

std::string html_text(std::string_view text) {
  std::string out;
  for (std::size_t begin = 0; begin < text.size();) {
    const char character = text[begin];
    const std::size_t end = text.find_first_of("&<>\"\n\t\r", begin);
    if (end != begin) {
      out += shown_name(text.substr(begin, end - begin));
      begin = end == std::string_view::npos ? text.size() : end;
      continue;
    }
    ++begin;
    switch (character) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\r':
        break;
      default:
        out += character;
    }
  }
  return out;
}

bool write_page(const std::string &path, const std::string &page,
                Failure &failure) {
  struct stat status = {};
  // Devices and pipes are written to; only a file is replaced.
  const bool is_replaced =
      stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode);
  const std::string written = is_replaced ? path + ".tmp" : path;
  OutputFile file;
  file.open(written, OutputFile::Mode::truncate);
  if (file.is_open())
    file << page;
  const bool is_good = file.is_open() && file.good();
  file.close();
  if (is_good && file.good() &&
      (!is_replaced || std::rename(written.c_str(), path.c_str()) == 0))
    return true;
  failure = {path, "", std::strerror(errno)};
  if (is_replaced && is_good)
    std::remove(written.c_str());
  return false;
}

}  // namespace vek::reporting
