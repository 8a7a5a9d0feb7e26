#include "html/html_nesting_limit.h"

#include <gumbo.h>

#include <cstring>
#include <utility>
#include <vector>

namespace OrvelParser {
namespace {

// <html> and <body> lie below every element the scan sees open.
constexpr uint32_t kImpliedDepth = 2;

bool IsAsciiAlpha(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }
bool IsTagSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; }

// Elements that have no content and are never open.
bool IsVoid(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_AREA: case GUMBO_TAG_BASE: case GUMBO_TAG_BASEFONT: case GUMBO_TAG_BGSOUND:
    case GUMBO_TAG_BR: case GUMBO_TAG_COL: case GUMBO_TAG_EMBED: case GUMBO_TAG_FRAME:
    case GUMBO_TAG_HR: case GUMBO_TAG_IMG: case GUMBO_TAG_IMAGE: case GUMBO_TAG_INPUT:
    case GUMBO_TAG_KEYGEN: case GUMBO_TAG_LINK: case GUMBO_TAG_META: case GUMBO_TAG_PARAM:
    case GUMBO_TAG_SOURCE: case GUMBO_TAG_TRACK: case GUMBO_TAG_WBR: case GUMBO_TAG_MENUITEM:
      return true;
    default:
      return false;
  }
}

// Elements whose content is text up to their own end tag.
bool IsRawText(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE: case GUMBO_TAG_TEXTAREA: case GUMBO_TAG_TITLE:
    case GUMBO_TAG_XMP: case GUMBO_TAG_IFRAME: case GUMBO_TAG_NOEMBED: case GUMBO_TAG_NOFRAMES:
      return true;
    default:
      return false;
  }
}

// Start tags that close an open <p> first.
bool ClosesParagraph(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_ADDRESS: case GUMBO_TAG_ARTICLE: case GUMBO_TAG_ASIDE: case GUMBO_TAG_BLOCKQUOTE:
    case GUMBO_TAG_CENTER: case GUMBO_TAG_DETAILS: case GUMBO_TAG_DIR: case GUMBO_TAG_DIV:
    case GUMBO_TAG_DL: case GUMBO_TAG_FIELDSET: case GUMBO_TAG_FIGCAPTION: case GUMBO_TAG_FIGURE:
    case GUMBO_TAG_FOOTER: case GUMBO_TAG_FORM: case GUMBO_TAG_H1: case GUMBO_TAG_H2: case GUMBO_TAG_H3:
    case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6: case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP:
    case GUMBO_TAG_HR: case GUMBO_TAG_LI: case GUMBO_TAG_DD: case GUMBO_TAG_DT: case GUMBO_TAG_LISTING:
    case GUMBO_TAG_MAIN: case GUMBO_TAG_MENU: case GUMBO_TAG_NAV: case GUMBO_TAG_OL: case GUMBO_TAG_P:
    case GUMBO_TAG_PRE: case GUMBO_TAG_SECTION: case GUMBO_TAG_SUMMARY: case GUMBO_TAG_TABLE:
    case GUMBO_TAG_UL: case GUMBO_TAG_XMP: case GUMBO_TAG_PLAINTEXT:
      return true;
    default:
      return false;
  }
}

bool IsHeading(GumboTag tag) { return tag >= GUMBO_TAG_H1 && tag <= GUMBO_TAG_H6; }

// The elements HTML calls special that can be open (not void, not raw
// text), except address, div and p: an implied close of an li, dd or dt
// does not reach below one of these.
bool StopsListItemClose(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_APPLET: case GUMBO_TAG_ARTICLE: case GUMBO_TAG_ASIDE: case GUMBO_TAG_BLOCKQUOTE:
    case GUMBO_TAG_BUTTON: case GUMBO_TAG_CAPTION: case GUMBO_TAG_CENTER: case GUMBO_TAG_COLGROUP:
    case GUMBO_TAG_DD: case GUMBO_TAG_DETAILS: case GUMBO_TAG_DIR: case GUMBO_TAG_DL: case GUMBO_TAG_DT:
    case GUMBO_TAG_FIELDSET: case GUMBO_TAG_FIGCAPTION: case GUMBO_TAG_FIGURE: case GUMBO_TAG_FOOTER:
    case GUMBO_TAG_FORM: case GUMBO_TAG_FRAMESET: case GUMBO_TAG_H1: case GUMBO_TAG_H2: case GUMBO_TAG_H3:
    case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6: case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP:
    case GUMBO_TAG_LI: case GUMBO_TAG_LISTING: case GUMBO_TAG_MAIN: case GUMBO_TAG_MARQUEE:
    case GUMBO_TAG_MENU: case GUMBO_TAG_NAV: case GUMBO_TAG_NOSCRIPT: case GUMBO_TAG_OBJECT: case GUMBO_TAG_OL:
    case GUMBO_TAG_PRE: case GUMBO_TAG_SECTION: case GUMBO_TAG_SELECT: case GUMBO_TAG_SUMMARY:
    case GUMBO_TAG_TABLE: case GUMBO_TAG_TBODY: case GUMBO_TAG_TD: case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_TFOOT: case GUMBO_TAG_TH: case GUMBO_TAG_THEAD: case GUMBO_TAG_TR: case GUMBO_TAG_UL:
    case GUMBO_TAG_SVG: case GUMBO_TAG_MATH:
      return true;
    default:
      return false;
  }
}

// Elements that end the search of an implied close: an open element below
// one of these is not closed by what happens inside it.
bool IsScopeBoundary(GumboTag tag) {
  switch (tag) {
    case GUMBO_TAG_TABLE: case GUMBO_TAG_TD: case GUMBO_TAG_TH: case GUMBO_TAG_CAPTION:
    case GUMBO_TAG_APPLET: case GUMBO_TAG_MARQUEE: case GUMBO_TAG_OBJECT: case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_BUTTON: case GUMBO_TAG_SVG: case GUMBO_TAG_MATH:
      return true;
    default:
      return false;
  }
}

// The open elements, as the scan estimates them.
class OpenElements {
 public:
  size_t Depth() const { return stack_.size() + kImpliedDepth; }
  GumboTag Top() const { return stack_.empty() ? GUMBO_TAG_UNKNOWN : stack_.back(); }
  bool InForeignContent() const { return foreign_ > 0; }

  void Push(GumboTag tag) {
    stack_.push_back(tag);
    if (tag == GUMBO_TAG_SVG || tag == GUMBO_TAG_MATH) ++foreign_;
  }

  // Closes the nearest open element for which `match` holds, with all
  // elements above it, unless an element for which `stop` holds comes
  // first.
  template <class Match, class Stop>
  void CloseNearest(Match match, Stop stop) {
    for (size_t i = stack_.size(); i-- > 0;) {
      if (match(stack_[i])) {
        PopTo(i);
        return;
      }
      if (stop(stack_[i])) return;
    }
  }

  void CloseNearest(GumboTag tag) {
    CloseNearest([tag](GumboTag t) { return t == tag; }, IsScopeBoundary);
  }

  // What a start tag `tag` closes before it opens.
  void CloseForStartTag(GumboTag tag) {
    if (ClosesParagraph(tag)) CloseNearest(GUMBO_TAG_P);
    switch (tag) {
      case GUMBO_TAG_LI:
        CloseNearest([](GumboTag t) { return t == GUMBO_TAG_LI; }, StopsListItemClose);
        break;
      case GUMBO_TAG_DD:
      case GUMBO_TAG_DT:
        CloseNearest([](GumboTag t) { return t == GUMBO_TAG_DD || t == GUMBO_TAG_DT; }, StopsListItemClose);
        break;
      case GUMBO_TAG_A:
      case GUMBO_TAG_SELECT:
        CloseNearest(tag);
        break;
      case GUMBO_TAG_OPTION:
      case GUMBO_TAG_OPTGROUP:
        if (Top() == GUMBO_TAG_OPTION) stack_.pop_back();
        if (tag == GUMBO_TAG_OPTGROUP && Top() == GUMBO_TAG_OPTGROUP) stack_.pop_back();
        break;
      case GUMBO_TAG_TD:
      case GUMBO_TAG_TH:
        CloseNearest([](GumboTag t) { return t == GUMBO_TAG_TD || t == GUMBO_TAG_TH; },
                     [](GumboTag t) { return t == GUMBO_TAG_TABLE; });
        // A cell straight in a table or section gets the row and body the
        // parser makes up for it.
        if (Top() == GUMBO_TAG_TABLE) Push(GUMBO_TAG_TBODY);
        if (Top() == GUMBO_TAG_TBODY || Top() == GUMBO_TAG_THEAD || Top() == GUMBO_TAG_TFOOT) {
          Push(GUMBO_TAG_TR);
        }
        break;
      case GUMBO_TAG_TR:
        CloseNearest([](GumboTag t) { return t == GUMBO_TAG_TR; },
                     [](GumboTag t) { return t == GUMBO_TAG_TABLE; });
        if (Top() == GUMBO_TAG_TABLE) Push(GUMBO_TAG_TBODY);
        break;
      case GUMBO_TAG_TBODY:
      case GUMBO_TAG_THEAD:
      case GUMBO_TAG_TFOOT:
        CloseNearest(
            [](GumboTag t) { return t == GUMBO_TAG_TBODY || t == GUMBO_TAG_THEAD || t == GUMBO_TAG_TFOOT; },
            [](GumboTag t) { return t == GUMBO_TAG_TABLE; });
        break;
      case GUMBO_TAG_TABLE:
        // A table straight inside a table, outside any cell, ends the first.
        CloseNearest([](GumboTag t) { return t == GUMBO_TAG_TABLE; },
                     [](GumboTag t) { return t == GUMBO_TAG_TD || t == GUMBO_TAG_TH || t == GUMBO_TAG_CAPTION; });
        break;
      default:
        if (IsHeading(tag) && IsHeading(Top())) stack_.pop_back();
        break;
    }
  }

  // An end tag closes its element and everything above it, when it is open.
  void CloseForEndTag(GumboTag tag) {
    for (size_t i = stack_.size(); i-- > 0;) {
      if (stack_[i] == tag) {
        PopTo(i);
        return;
      }
    }
  }

 private:
  void PopTo(size_t index) {
    while (stack_.size() > index) {
      if (stack_.back() == GUMBO_TAG_SVG || stack_.back() == GUMBO_TAG_MATH) --foreign_;
      stack_.pop_back();
    }
  }

  std::vector<GumboTag> stack_;
  uint32_t foreign_ = 0;
};

// Walks the tags of an HTML text.
class TagScanner {
 public:
  explicit TagScanner(const std::string& text) : text_(text) {}

  size_t Position() const { return pos_; }
  bool AtEnd() const { return pos_ >= text_.size(); }

  // Moves past the text up to the next '<' that may begin markup.
  void SkipText() {
    const size_t next = text_.find('<', pos_);
    pos_ = next == std::string::npos ? text_.size() : next;
  }

  // Moves past `what` when the text continues with it, ASCII case ignored.
  bool Consume(const char* what) {
    const size_t length = std::strlen(what);
    if (text_.size() - pos_ < length) return false;
    for (size_t i = 0; i < length; ++i) {
      if ((text_[pos_ + i] | 0x20) != (what[i] | 0x20)) return false;
    }
    pos_ += length;
    return true;
  }

  // Moves past the next `what`, or to the end.
  void SkipPast(const char* what) {
    const size_t at = text_.find(what, pos_);
    pos_ = at == std::string::npos ? text_.size() : at + std::strlen(what);
  }

  // At a tag name: reads it and returns its tag.
  GumboTag ReadName() {
    const size_t start = pos_;
    while (pos_ < text_.size() && !IsTagSpace(text_[pos_]) && text_[pos_] != '/' && text_[pos_] != '>') ++pos_;
    return gumbo_tagn_enum(text_.data() + start, static_cast<unsigned>(pos_ - start));
  }

  // After a tag name: moves past the attributes and the closing '>'.
  // Returns whether the tag ended in "/>".
  bool SkipAttributes() {
    bool self_closing = false;
    while (pos_ < text_.size()) {
      const char c = text_[pos_];
      if (c == '>') {
        ++pos_;
        return self_closing;
      }
      self_closing = c == '/';
      if (c == '"' || c == '\'') {
        const size_t close = text_.find(c, pos_ + 1);
        pos_ = close == std::string::npos ? text_.size() : close + 1;
        continue;
      }
      ++pos_;
    }
    return self_closing;
  }

  // Moves past the text of a raw-text element to its end tag, and past the
  // end tag.
  void SkipRawText(GumboTag tag) {
    const char* name = gumbo_normalized_tagname(tag);
    for (;;) {
      SkipPast("</");
      if (AtEnd()) return;
      const size_t name_start = pos_;
      if (Consume(name) && (AtEnd() || IsTagSpace(text_[pos_]) || text_[pos_] == '/' || text_[pos_] == '>')) {
        SkipAttributes();
        return;
      }
      pos_ = name_start;
    }
  }

 private:
  const std::string& text_;
  size_t pos_ = 0;
};

}  // namespace

uint32_t LimitNesting(std::string& utf8, uint32_t max_depth) {
  std::vector<std::pair<size_t, size_t>> removed;  // [begin, end) of start tags taken out
  OpenElements open;
  TagScanner scan(utf8);
  for (scan.SkipText(); !scan.AtEnd(); scan.SkipText()) {
    const size_t tag_start = scan.Position();
    if (scan.Consume("<!--")) {
      // "<!-->" and "<!--->" are whole comments.
      if (!scan.Consume(">") && !scan.Consume("->")) scan.SkipPast("-->");
    } else if (scan.Consume("<!") || scan.Consume("<?")) {
      scan.SkipPast(">");
    } else if (scan.Consume("</")) {
      if (scan.AtEnd() || !IsAsciiAlpha(utf8[scan.Position()])) {
        scan.SkipPast(">");
        continue;
      }
      const GumboTag tag = scan.ReadName();
      scan.SkipAttributes();
      open.CloseForEndTag(tag);
    } else {
      scan.Consume("<");
      if (scan.AtEnd() || !IsAsciiAlpha(utf8[scan.Position()])) continue;  // a '<' in text
      const GumboTag tag = scan.ReadName();
      const bool self_closing = scan.SkipAttributes();
      if (tag == GUMBO_TAG_HTML || tag == GUMBO_TAG_HEAD || tag == GUMBO_TAG_BODY) continue;
      if (tag == GUMBO_TAG_PLAINTEXT) break;  // the rest is text
      const bool foreign = open.InForeignContent();
      if (!foreign) open.CloseForStartTag(tag);
      if (IsVoid(tag) || (foreign && self_closing)) continue;
      if (!foreign && IsRawText(tag)) {
        scan.SkipRawText(tag);
        continue;
      }
      if (open.Depth() >= max_depth) {
        removed.emplace_back(tag_start, scan.Position());
        continue;
      }
      open.Push(tag);
    }
  }
  if (removed.empty()) return 0;

  std::string kept;
  kept.reserve(utf8.size());
  size_t from = 0;
  for (const auto& [begin, end] : removed) {
    kept.append(utf8, from, begin - from);
    from = end;
  }
  kept.append(utf8, from, std::string::npos);
  utf8 = std::move(kept);
  return static_cast<uint32_t>(removed.size());
}

}  // namespace OrvelParser
