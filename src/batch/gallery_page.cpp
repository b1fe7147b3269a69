// The pages of a gallery as HTML, and their rules.
#include <algorithm>

#include "base/page_text.h"
#include "base/text.h"
#include "batch/gallery.h"

namespace vellum {
namespace {

std::string number_of(const FieldValues& values, const char* field) {
  return std::to_string(values.number(field));
}

std::string color_of(const FieldValues& values, const char* field) {
  return css_color(static_cast<std::uint32_t>(values.number(field)));
}

/// Names of fonts, without what would end a rule.
std::string font_of(const FieldValues& values, const char* field) {
  std::string font = values.text(field);
  std::erase_if(font, [](unsigned char c) {
    return c < ' ' || std::string_view("<>{};\\@").find(static_cast<char>(c)) != std::string_view::npos;
  });
  return font.empty() ? "sans-serif" : font;
}

std::string letters(const FieldValues& values, const char* strong, const char* em) {
  return std::string(" font-weight: ") + (values.number(strong) != 0 ? "bold" : "normal") +
         "; font-style: " + (values.number(em) != 0 ? "italic" : "normal") + ";";
}

std::string frame_rule(const FieldValues& values, const std::string& line, const std::string& ground,
                       const char* thick, const char* round) {
  return " border: " + number_of(values, thick) + "px solid var(--" + line + "); background: var(--" +
         ground + "); border-radius: " + number_of(values, round) + "px;";
}

bool is_light(std::uint32_t color) {
  return (color & 255) * 77 + (color >> 8 & 255) * 150 + (color >> 16 & 255) * 28 > 255u * 128;
}

/// Colors of one name each, so that the dark page has others.
std::string colors(const FieldValues& values) {
  std::string rules = ":root {\n  color-scheme: light dark;\n";
  for (const auto& [name, field] :
       {std::pair("back", "back"), std::pair("text", "itemColor"), std::pair("title", "titleColor"),
        std::pair("frame-line", "frameFore"), std::pair("frame-ground", "frameBack"),
        std::pair("title-line", "titleFrameFore"), std::pair("title-ground", "titleFrameBack"),
        std::pair("here", "pagerActive"), std::pair("there", "pagerInactive"),
        std::pair("alpha", "alphaBack"), std::pair("picture-line", "graphicFrameColor")})
    rules += "  --" + std::string(name) + ": " + color_of(values, field) + ";\n";
  rules += "  --shade: rgb(0 0 0 / 30%);\n}\n";
  // Who chose a dark page has it everywhere.
  if (!is_light(static_cast<std::uint32_t>(values.number("back")))) return rules;
  return rules +
         "@media (prefers-color-scheme: dark) {\n  :root {\n    --back: #16181B;\n    --text: #E4E6E8;\n"
         "    --title: #F2F3F4;\n    --frame-line: #4A4F55;\n    --frame-ground: #202327;\n"
         "    --title-line: #4A4F55;\n    --title-ground: #202327;\n    --here: #FF8A80;\n    --there: "
         "#A8ADB3;\n"
         "    --picture-line: #8A9097;\n    --shade: rgb(0 0 0 / 60%);\n  }\n}\n";
}

std::string item_rules(const FieldValues& values) {
  const std::string size = number_of(values, "thumb");
  const auto columns = [](const std::string& least) {
    return "grid-template-columns: repeat(auto-fill, minmax(min(100%, " + least + "), 1fr)); ";
  };
  // On a telephone two columns are better than one.
  std::string rules =
      ".items { display: grid; " + columns(size + "px + 2rem") +
      "gap: " + std::to_string(2 * values.number("itemMargin")) +
      "px; list-style: none; margin: 0; padding: 0; }\n@media (max-width: 30rem) { .items { " +
      columns(size + "px + 2rem, 8rem") +
      "} }\n.items figure { display: flex; flex-direction: column; box-sizing: border-box; "
      "height: 100%; margin: 0; padding: .75rem; text-align: center; font-family: " +
      font_of(values, "itemFont") + "; color: var(--text); overflow-wrap: anywhere;";
  if (values.number("itemFrame") != 0)
    rules += frame_rule(values, "frame-line", "frame-ground", "frameThick", "frameRound");
  if (values.number("itemShadow") != 0) rules += " box-shadow: 0 1px 4px var(--shade);";
  rules +=
      " }\n.items figure > a { display: flex; flex: 1; align-items: center; justify-content: center; }\n"
      ".items img { max-width: 100%; height: auto; vertical-align: bottom; background: var(--alpha);";
  if (values.number("graphicFrame") != 0) rules += " border: 1px solid var(--picture-line);";
  if (values.number("graphicShadow") != 0) rules += " box-shadow: 0 2px 6px var(--shade);";
  rules +=
      " }\n.name { margin: .5rem 0 0; font-size: " + number_of(values, "nameSize") + "px;" +
      letters(values, "nameStrong", "nameEm") +
      " }\n.description { margin: .25rem 0 0; white-space: pre-line; font-size: " +
      number_of(values, "descriptionSize") + "px;" + letters(values, "descriptionStrong", "descriptionEm") +
      " }\n.original { margin: .5rem 0 0; font-size: " + number_of(values, "descriptionSize") + "px; }\n";
  return rules;
}

constexpr const char* kSides[] = {"left", "center", "right"};

std::string title_rules(const FieldValues& values) {
  const auto side = static_cast<std::size_t>(std::clamp<std::int64_t>(values.number("titleSide"), 0, 2));
  std::string rules = "h1 { margin: 0 0 1rem; font-family: " + font_of(values, "titleFont") +
                      "; font-size: " + number_of(values, "titleSize") +
                      "px; color: var(--title); text-align: " + kSides[side] + ";" +
                      letters(values, "titleStrong", "titleEm") + " overflow-wrap: anywhere;";
  if (values.number("titleShadow") != 0) rules += " text-shadow: 1px 2px 3px var(--shade);";
  if (values.number("titleFrame") != 0)
    rules += " padding: .25em .5em;" +
             frame_rule(values, "title-line", "title-ground", "titleFrameThick", "titleFrameRound");
  return rules + " }\n";
}

std::string link_to(const FieldValues& values, std::size_t page, const std::string& text, const char* more) {
  return "<a href=\"" + url_part(gallery_page_name(values, page)) + "\"" + more + ">" + text + "</a>\n";
}

/// The numbers around this page, the ends, and one back and on.
std::string pager(const FieldValues& values, std::size_t page, std::size_t pages) {
  if (pages < 2) return {};
  const auto range = static_cast<std::size_t>(values.number("pagerRange"));
  const std::size_t first = std::min(page - std::min(page, range / 2), pages - std::min(range, pages));
  const std::size_t end = std::min(first + range, pages);
  std::string out = "<nav class=\"pager\" aria-label=\"Pages\">\n";
  if (page > 0) out += link_to(values, page - 1, "&lsaquo; Previous", " rel=\"prev\" accesskey=\"p\"");
  if (first > 0) out += link_to(values, 0, "1", "") + (first > 1 ? "<span>&hellip;</span>\n" : "");
  for (std::size_t i = first; i < end; ++i)
    out += i == page ? "<span class=\"here\" aria-current=\"page\">" + std::to_string(i + 1) + "</span>\n"
                     : link_to(values, i, std::to_string(i + 1), "");
  if (end < pages)
    out += (end + 1 < pages ? "<span>&hellip;</span>\n" : "") +
           link_to(values, pages - 1, std::to_string(pages), "");
  if (page + 1 < pages) out += link_to(values, page + 1, "Next &rsaquo;", " rel=\"next\" accesskey=\"n\"");
  return out + "</nav>\n";
}

std::string figure(const GalleryItem& item, std::size_t number, const FieldValues& values) {
  const std::string name = html_text(item.name);
  const std::string alt = html_text(item.description.empty() ? item.name : item.description);
  std::string out =
      "<li><figure>\n<a href=\"" + html_text(item.link) + "\" title=\"" + name + "\"><img src=\"" +
      item.image + "\" width=\"" + std::to_string(item.width) + "\" height=\"" + std::to_string(item.height) +
      "\" alt=\"" + alt + "\" loading=\"lazy\"></a>\n<figcaption>\n" + "<p class=\"name\">" +
      (values.number("itemIndex") != 0 ? std::to_string(number + 1) + ". " : "") + name + "</p>\n";
  if (!item.description.empty()) out += "<p class=\"description\">" + html_text(item.description) + "</p>\n";
  return out + "<p class=\"original\"><a href=\"" + item.download + "\" download>" + html_text(item.button) +
         "</a></p>\n</figcaption>\n</figure></li>\n";
}

}  // namespace

std::string gallery_page_name(const FieldValues& values, std::size_t page) {
  return values.text("baseName") + (page > 0 ? "_" + std::to_string(page + 1) : "") + ".html";
}

std::string gallery_css(const FieldValues& values) {
  return colors(values) +
         "body { margin: 0 auto; max-width: 100rem; padding: " + number_of(values, "topMargin") +
         "px clamp(.75rem, 3vw, 2rem) 2rem; background: var(--back); color: var(--text); font-family: " +
         font_of(values, "font") +
         "; }\na { color: inherit; }\na:focus-visible { outline: 3px solid var(--here); outline-offset: 2px; "
         "}\n"
         ".skip { position: absolute; left: -100vw; }\n.skip:focus { left: 1rem; }\n" +
         title_rules(values) + item_rules(values) +
         ".pager { display: flex; flex-wrap: wrap; gap: .75em; justify-content: center; margin: 1.5rem 0; "
         "font-size: " +
         number_of(values, "pagerSize") +
         "px; color: var(--there); }\n.pager .here { color: var(--here); font-weight: bold; }\n";
}

std::string gallery_page(std::span<const GalleryItem> items, std::size_t first, std::size_t page,
                         std::size_t pages, const FieldValues& values, const std::string& css,
                         const std::string& icon, const std::string& header, const std::string& footer) {
  std::string title = html_text(values.text("title"));
  if (title.empty()) title = "Gallery";
  std::string out =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<meta name=\"viewport\" "
      "content=\"width=device-width, initial-scale=1\">\n<title>" +
      title + (page > 0 ? " - " + std::to_string(page + 1) : "") + "</title>\n";
  if (!icon.empty()) out += "<link rel=\"icon\" type=\"image/png\" href=\"" + icon + "\">\n";
  out += values.number("externalCss") != 0
             ? "<link rel=\"stylesheet\" href=\"" + url_part(values.text("baseName") + ".css") + "\">\n"
             : "<style>\n" + css + "</style>\n";
  out += "</head>\n<body>\n" + header +
         "<p><a class=\"skip\" href=\"#pictures\">Skip to the pictures</a></p>\n<header>\n<h1>" + title +
         "</h1>\n</header>\n<main id=\"pictures\">\n<ul class=\"items\">\n";
  for (std::size_t i = 0; i < items.size(); ++i) out += figure(items[i], first + i, values);
  return out + "</ul>\n</main>\n" + pager(values, page, pages) + footer + "</body>\n</html>\n";
}

}  // namespace vellum
