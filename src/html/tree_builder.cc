#include "html/tree_builder.h"

#include <algorithm>
#include <array>
#include <deque>
#include <string>
#include <vector>

#include "html/foreign_content.h"
#include "html/tokenizer.h"
#include "html/tree_builder_tables.h"

namespace OrvelParser {
namespace {

using enum TagId;

enum class Mode : uint8_t {
  kInitial,
  kBeforeHtml,
  kBeforeHead,
  kInHead,
  kInHeadNoscript,
  kAfterHead,
  kInBody,
  kText,
  kInTable,
  kInTableText,
  kInCaption,
  kInColumnGroup,
  kInTableBody,
  kInRow,
  kInCell,
  kInTemplate,
  kAfterBody,
  kInFrameset,
  kAfterFrameset,
  kAfterAfterBody,
  kAfterAfterFrameset,
};

// The builder's record of an element it may still refer to: one on the
// stack of open elements, in the list of active formatting elements, or
// held as the head or form element. Records are recycled once nothing
// refers to them, so their number stays bounded by the stack's and the
// list's limits whatever the size of the document.
struct Element {
  SinkNode node = nullptr;
  SinkNode container = nullptr;  // where children go: template contents for a template
  SinkNode parent = nullptr;     // the node it is in; null: the document
  std::string_view name;         // local name: static, or in owned_name
  std::string owned_name;
  // A formatting element's attributes, to compare (Noah's Ark) and to make
  // it again: name, NUL, value, NUL for each.
  std::string attributes;
  TagId tag = kTagUnknown;
  Namespace ns = Namespace::kHtml;
  bool html_integration_point = false;
  bool on_stack = false;
  uint32_t refs = 0;

  bool Is(TagId t) const { return ns == Namespace::kHtml && tag == t; }
  bool IsHtml() const { return ns == Namespace::kHtml; }
};

// A run of characters with its span in the input.
struct Text {
  std::string_view chars;
  uint32_t begin = 0;
  uint32_t end = 0;
  bool in_input = false;

  bool empty() const { return chars.empty(); }
  // The part from `offset` on, `length` bytes long.
  Text Sub(size_t offset, size_t length = std::string_view::npos) const {
    Text part = *this;
    part.chars = chars.substr(offset, length);
    if (in_input) {
      part.begin = begin + static_cast<uint32_t>(offset);
      part.end = part.begin + static_cast<uint32_t>(part.chars.size());
    }
    return part;
  }
};

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; }

size_t SpacePrefix(std::string_view s) {
  size_t i = 0;
  while (i < s.size() && IsSpace(s[i])) ++i;
  return i;
}

bool AllSpace(std::string_view s) { return SpacePrefix(s) == s.size(); }

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x + 32);
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y + 32);
    if (x != y) return false;
  }
  return true;
}

enum class Scope : uint8_t { kDefault, kListItem, kButton, kTable };

class Builder {
 public:
  Builder(std::string_view input, TreeSink& sink, const TreeBuilderOptions& options)
      : tokenizer_(input), sink_(sink), scripting_(options.scripting) {
    open_counts_.fill(0);
    if (!options.fragment_context.empty()) StartFragment(options.fragment_context, options.fragment_namespace);
  }

  void Run() {
    Token token;
    do {
      const Element* adjusted = AdjustedCurrent();
      tokenizer_.SetCdataAllowed(adjusted != nullptr && !adjusted->IsHtml());
      tokenizer_.Next(token);
      Process(token);
    } while (token.type != TokenType::kEndOfFile);
    // Give back every record, so nothing the sink handed out is referred to.
    while (!stack_.empty()) Pop();
    formatting_.clear();
  }

 private:
  // ---------------------------------------------------------------- records

  Element* NewRecord() {
    Element* e;
    if (!free_.empty()) {
      e = free_.back();
      free_.pop_back();
    } else {
      e = &records_.emplace_back();
    }
    e->refs = 0;
    e->on_stack = false;
    e->html_integration_point = false;
    e->attributes.clear();
    e->parent = nullptr;
    return e;
  }
  void Ref(Element* e) {
    if (e != nullptr) ++e->refs;
  }
  void Unref(Element* e) {
    if (e != nullptr && --e->refs == 0) free_.push_back(e);
  }

  // ------------------------------------------------------------ the stack

  Element* Current() const { return stack_.empty() ? nullptr : stack_.back(); }
  Element* AdjustedCurrent() const {
    if (context_ != nullptr && stack_.size() == 1) return context_;
    return Current();
  }
  bool CurrentIs(TagId tag) const { return !stack_.empty() && stack_.back()->Is(tag); }
  bool IsOpen(TagId tag) const { return open_counts_[static_cast<size_t>(tag)] != 0; }

  void Push(Element* e) {
    stack_.push_back(e);
    e->on_stack = true;
    Ref(e);
    if (e->IsHtml()) ++open_counts_[static_cast<size_t>(e->tag)];
  }
  void Pop() {
    Element* e = stack_.back();
    stack_.pop_back();
    e->on_stack = false;
    if (e->IsHtml()) --open_counts_[static_cast<size_t>(e->tag)];
    Unref(e);
  }
  void RemoveFromStack(Element* e) {
    for (size_t i = stack_.size(); i-- > 0;) {
      if (stack_[i] == e) {
        stack_.erase(stack_.begin() + static_cast<ptrdiff_t>(i));
        e->on_stack = false;
        if (e->IsHtml()) --open_counts_[static_cast<size_t>(e->tag)];
        Unref(e);
        return;
      }
    }
  }
  int IndexOnStack(const Element* e) const {
    for (size_t i = stack_.size(); i-- > 0;) {
      if (stack_[i] == e) return static_cast<int>(i);
    }
    return -1;
  }
  // Pops up to and including the HTML element `tag`; when `end_tag_end` is
  // not 0, that element's end tag ended there.
  void PopUntil(TagId tag, uint32_t end_tag_end = 0) {
    while (!stack_.empty()) {
      Element* e = stack_.back();
      const bool found = e->Is(tag);
      if (found && end_tag_end != 0) sink_.SetEndTag(e->node, end_tag_end);
      Pop();
      if (found) return;
    }
  }
  void PopUntilHeading(uint32_t end_tag_end) {
    while (!stack_.empty()) {
      Element* e = stack_.back();
      const bool found = e->IsHtml() && IsHeading(e->tag);
      if (found && end_tag_end != 0) sink_.SetEndTag(e->node, end_tag_end);
      Pop();
      if (found) return;
    }
  }
  void PopUntilCell() {
    while (!stack_.empty()) {
      const bool found = Current()->Is(k_td) || Current()->Is(k_th);
      Pop();
      if (found) return;
    }
  }

  bool IsScopeBoundary(const Element* e, Scope scope) const {
    if (e->IsHtml()) {
      switch (scope) {
        case Scope::kTable:
          return e->tag == k_html || e->tag == k_table || e->tag == k_template;
        case Scope::kListItem:
          if (e->tag == k_ol || e->tag == k_ul) return true;
          break;
        case Scope::kButton:
          if (e->tag == k_button) return true;
          break;
        default:
          break;
      }
      return IsDefaultScopeBoundary(e->tag);
    }
    if (scope == Scope::kTable) return false;
    if (e->ns == Namespace::kMathml) {
      return e->tag == k_mi || e->tag == k_mo || e->tag == k_mn || e->tag == k_ms || e->tag == k_mtext ||
             e->tag == k_annotation_xml;
    }
    return e->tag == k_foreignobject || e->tag == k_desc || e->tag == k_title;
  }

  bool InScope(TagId tag, Scope scope = Scope::kDefault) const {
    if (!IsOpen(tag)) return false;
    for (size_t i = stack_.size(); i-- > 0;) {
      const Element* e = stack_[i];
      if (e->Is(tag)) return true;
      if (IsScopeBoundary(e, scope)) return false;
    }
    return false;
  }
  bool HeadingInScope() const {
    bool any = false;
    for (TagId t : {k_h1, k_h2, k_h3, k_h4, k_h5, k_h6}) any = any || IsOpen(t);
    if (!any) return false;
    for (size_t i = stack_.size(); i-- > 0;) {
      const Element* e = stack_[i];
      if (e->IsHtml() && IsHeading(e->tag)) return true;
      if (IsScopeBoundary(e, Scope::kDefault)) return false;
    }
    return false;
  }
  bool NodeInScope(const Element* target) const {
    for (size_t i = stack_.size(); i-- > 0;) {
      const Element* e = stack_[i];
      if (e == target) return true;
      if (IsScopeBoundary(e, Scope::kDefault)) return false;
    }
    return false;
  }

  void GenerateImpliedEndTags(TagId except = kTagUnknown) {
    while (!stack_.empty()) {
      const Element* e = Current();
      if (!e->IsHtml() || e->tag == except || !IsImpliedEndTag(e->tag)) return;
      Pop();
    }
  }
  void GenerateImpliedEndTagsThoroughly() {
    while (!stack_.empty()) {
      const Element* e = Current();
      if (!e->IsHtml() || !(IsImpliedEndTag(e->tag) || IsTablePart(e->tag))) return;
      Pop();
    }
  }
  void ClosePIfInButtonScope(uint32_t end_tag_end = 0) {
    if (!InScope(k_p, Scope::kButton)) return;
    GenerateImpliedEndTags(k_p);
    PopUntil(k_p, end_tag_end);
  }
  void ClearStackBackTo(std::initializer_list<TagId> tags) {
    while (!stack_.empty()) {
      const Element* e = Current();
      if (e->IsHtml() && (e->tag == k_html || std::find(tags.begin(), tags.end(), e->tag) != tags.end())) return;
      Pop();
    }
  }
  Element* FindOnStack(TagId tag) const {
    if (!IsOpen(tag)) return nullptr;
    for (size_t i = stack_.size(); i-- > 0;) {
      if (stack_[i]->Is(tag)) return stack_[i];
    }
    return nullptr;
  }

  // --------------------------------------------------- inserting nodes

  struct Place {
    SinkNode parent;
    SinkNode before;
  };

  Place AppropriatePlace(Element* override_target = nullptr) const {
    Element* target = override_target != nullptr ? override_target : Current();
    if (target == nullptr) return {nullptr, nullptr};
    if (foster_parenting_ && target->IsHtml() &&
        (target->tag == k_table || target->tag == k_tbody || target->tag == k_tfoot || target->tag == k_thead ||
         target->tag == k_tr)) {
      int last_template = -1, last_table = -1;
      for (size_t i = stack_.size(); i-- > 0;) {
        if (last_template < 0 && stack_[i]->Is(k_template)) last_template = static_cast<int>(i);
        if (last_table < 0 && stack_[i]->Is(k_table)) last_table = static_cast<int>(i);
        if (last_table >= 0 && (last_template >= 0 || !IsOpen(k_template))) break;
      }
      if (last_template >= 0 && (last_table < 0 || last_template > last_table)) {
        return {stack_[last_template]->container, nullptr};
      }
      if (last_table < 0) return {stack_[0]->container, nullptr};
      const Element* table = stack_[last_table];
      if (table->parent != nullptr || last_table == 0) return {table->parent, table->node};
      return {stack_[last_table - 1]->container, nullptr};
    }
    return {target->container, nullptr};
  }

  // Makes the record and the sink's node of an element.
  Element* CreateElement(TagId tag, std::string_view name, Namespace ns, std::span<const SinkAttribute> attributes,
                         uint32_t begin, uint32_t end) {
    Element* e = NewRecord();
    e->tag = tag;
    e->ns = ns;
    if (tag != kTagUnknown && ns == Namespace::kHtml) {
      e->name = TagName(tag);
    } else {
      std::string_view stored = ns == Namespace::kSvg ? AdjustSvgTagName(name) : name;
      if (stored.data() == name.data()) {
        e->owned_name.assign(name);
        stored = e->owned_name;
      }
      e->name = stored;
    }
    if (ns == Namespace::kMathml && tag == k_annotation_xml) {
      for (const SinkAttribute& a : attributes) {
        if (a.name == "encoding" && a.ns == AttributeNamespace::kNone) {
          e->html_integration_point =
              EqualsIgnoreCase(a.value, "text/html") || EqualsIgnoreCase(a.value, "application/xhtml+xml");
        }
      }
    } else if (ns == Namespace::kSvg) {
      e->html_integration_point = tag == k_foreignobject || tag == k_desc || tag == k_title;
    }
    e->node = sink_.CreateElement(SinkElement{e->name, tag, ns, attributes, begin, end});
    e->container = e->Is(k_template) ? sink_.TemplateContents(e->node) : e->node;
    return e;
  }

  void InsertAt(Element* e, Place place) {
    sink_.Insert(place.parent, e->node, place.before);
    e->parent = place.parent;
  }

  // Inserts an element for the current start tag (or a made-up one) at the
  // appropriate place and pushes it. Returns it.
  Element* Insert(TagId tag, std::string_view name, Namespace ns, std::span<const SinkAttribute> attributes,
                  uint32_t begin, uint32_t end) {
    const Place place = AppropriatePlace();
    Element* e = CreateElement(tag, name, ns, attributes, begin, end);
    InsertAt(e, place);
    Push(e);
    return e;
  }
  Element* InsertHtml(const Token& t) { return Insert(t.tag, t.data, Namespace::kHtml, attributes_, t.begin, t.end); }
  Element* InsertImplied(TagId tag, uint32_t at) { return Insert(tag, TagName(tag), Namespace::kHtml, {}, at, at); }
  void InsertVoid(const Token& t) {
    InsertHtml(t);
    Pop();
  }

  void InsertText(Text text) {
    if (text.empty()) return;
    const Place place = AppropriatePlace();
    if (place.parent == nullptr) return;  // text never goes into the document itself
    sink_.InsertText(place.parent, place.before, text.chars, text.begin, text.end, text.in_input);
  }

  void InsertComment(const Token& t, SinkNode parent) { sink_.AppendComment(parent, t.data); }
  void InsertComment(const Token& t) {
    const Place place = AppropriatePlace();
    sink_.AppendComment(place.parent, t.data);
  }

  // -------------------------------------- active formatting elements

  bool InFormattingList(const Element* e) const {
    return std::find(formatting_.begin(), formatting_.end(), e) != formatting_.end();
  }
  void RemoveFromFormatting(Element* e) {
    auto it = std::find(formatting_.begin(), formatting_.end(), e);
    if (it == formatting_.end()) return;
    formatting_.erase(it);
    Unref(e);
  }
  void PushMarker() { formatting_.push_back(nullptr); }
  void ClearFormattingToMarker() {
    while (!formatting_.empty()) {
      Element* e = formatting_.back();
      formatting_.pop_back();
      if (e == nullptr) return;
      Unref(e);
    }
  }

  static void SaveAttributes(Element* e, std::span<const SinkAttribute> attributes) {
    for (const SinkAttribute& a : attributes) {
      e->attributes.append(a.name);
      e->attributes.push_back('\0');
      e->attributes.append(a.value);
      e->attributes.push_back('\0');
    }
  }
  // The saved attributes of `e` as sink attributes, in `out`.
  static void LoadAttributes(const Element* e, std::vector<SinkAttribute>& out) {
    out.clear();
    std::string_view rest = e->attributes;
    while (!rest.empty()) {
      const size_t name_end = rest.find('\0');
      const size_t value_end = rest.find('\0', name_end + 1);
      out.push_back({rest.substr(0, name_end), rest.substr(name_end + 1, value_end - name_end - 1)});
      rest.remove_prefix(value_end + 1);
    }
  }
  static bool SameAttributes(const Element* a, const Element* b) {
    if (a->attributes.size() != b->attributes.size()) return false;
    if (a->attributes == b->attributes) return true;
    // Same set in another order: every name=value of a is in b.
    std::string_view rest = a->attributes;
    const std::string_view other = b->attributes;
    while (!rest.empty()) {
      const size_t name_end = rest.find('\0');
      const size_t value_end = rest.find('\0', name_end + 1);
      const std::string_view pair = rest.substr(0, value_end + 1);
      bool found = false;
      for (size_t at = 0; at < other.size();) {
        const size_t n = other.find('\0', at);
        const size_t v = other.find('\0', n + 1);
        if (other.substr(at, v + 1 - at) == pair) {
          found = true;
          break;
        }
        at = v + 1;
      }
      if (!found) return false;
      rest.remove_prefix(value_end + 1);
    }
    return true;
  }

  void PushFormatting(Element* e) {
    int same = 0;
    size_t earliest = 0;
    for (size_t i = formatting_.size(); i-- > 0;) {
      const Element* other = formatting_[i];
      if (other == nullptr) break;
      if (other->tag == e->tag && SameAttributes(other, e)) {
        ++same;
        earliest = i;
      }
    }
    if (same >= 3) {
      Element* dropped = formatting_[earliest];
      formatting_.erase(formatting_.begin() + static_cast<ptrdiff_t>(earliest));
      Unref(dropped);
    }
    if (formatting_.size() >= TreeBuilder::kMaxFormattingEntries) {
      auto oldest = std::find_if(formatting_.begin(), formatting_.end(), [](Element* x) { return x != nullptr; });
      if (oldest != formatting_.end()) {
        Element* dropped = *oldest;
        formatting_.erase(oldest);
        Unref(dropped);
      }
    }
    formatting_.push_back(e);
    Ref(e);
  }

  // Makes a new element like `old` (same name, attributes), made up.
  Element* CloneElement(const Element* old, uint32_t at) {
    LoadAttributes(old, scratch_attributes_);
    Element* e = CreateElement(old->tag, old->name, old->ns, scratch_attributes_, at, at);
    e->attributes = old->attributes;
    return e;
  }

  void ReconstructFormatting(uint32_t at) {
    if (formatting_.empty()) return;
    Element* last = formatting_.back();
    if (last == nullptr || last->on_stack) return;
    size_t i = formatting_.size() - 1;
    while (i > 0) {
      const Element* e = formatting_[i - 1];
      if (e == nullptr || e->on_stack) break;
      --i;
    }
    for (; i < formatting_.size(); ++i) {
      if (stack_.size() >= TreeBuilder::kMaxDepth) return;
      Element* old = formatting_[i];
      const Place place = AppropriatePlace();
      Element* e = CloneElement(old, at);
      InsertAt(e, place);
      Push(e);
      formatting_[i] = e;
      Ref(e);
      Unref(old);
    }
  }

  // The adoption agency algorithm for the end tag `tag`. Returns false
  // when the end tag is to be handled as "any other end tag".
  bool AdoptionAgency(TagId tag, uint32_t end_tag_end) {
    Element* current = Current();
    if (current != nullptr && current->Is(tag) && !InFormattingList(current)) {
      if (end_tag_end != 0) sink_.SetEndTag(current->node, end_tag_end);
      Pop();
      return true;
    }
    for (int outer = 0; outer < 8; ++outer) {
      Element* fe = nullptr;
      size_t fe_index = 0;
      for (size_t i = formatting_.size(); i-- > 0;) {
        if (formatting_[i] == nullptr) break;
        if (formatting_[i]->tag == tag) {
          fe = formatting_[i];
          fe_index = i;
          break;
        }
      }
      if (fe == nullptr) return false;
      const int fe_stack = IndexOnStack(fe);
      if (fe_stack < 0) {
        formatting_.erase(formatting_.begin() + static_cast<ptrdiff_t>(fe_index));
        Unref(fe);
        return true;
      }
      if (!NodeInScope(fe)) return true;
      int fb_index = -1;
      for (size_t i = static_cast<size_t>(fe_stack) + 1; i < stack_.size(); ++i) {
        if (IsSpecial(stack_[i])) {
          fb_index = static_cast<int>(i);
          break;
        }
      }
      if (fb_index < 0) {
        if (fe == Current() && end_tag_end != 0) sink_.SetEndTag(fe->node, end_tag_end);
        while (Current() != fe) Pop();
        Pop();
        RemoveFromFormatting(fe);
        return true;
      }
      Element* furthest = stack_[fb_index];
      Element* common = stack_[fe_stack - 1];
      size_t bookmark = fe_index;
      Element* node = furthest;
      Element* last = furthest;
      int node_index = fb_index;
      for (int inner = 1;; ++inner) {
        --node_index;
        node = stack_[node_index];
        if (node == fe) break;
        auto in_list = std::find(formatting_.begin(), formatting_.end(), node);
        if (inner > 3 && in_list != formatting_.end()) {
          const size_t at = static_cast<size_t>(in_list - formatting_.begin());
          if (at < bookmark) --bookmark;
          formatting_.erase(in_list);
          Unref(node);
          in_list = formatting_.end();
        }
        if (in_list == formatting_.end()) {
          RemoveFromStack(node);  // node_index now names the element above it
          continue;
        }
        Element* clone = CloneElement(node, end_tag_end);
        *in_list = clone;
        Ref(clone);
        stack_[node_index] = clone;
        clone->on_stack = true;
        Ref(clone);
        // The old element leaves both the list and the stack.
        node->on_stack = false;
        Unref(node);
        Unref(node);
        if (last == furthest) bookmark = static_cast<size_t>(in_list - formatting_.begin()) + 1;
        // The furthest block is in the tree; a clone made before is not yet.
        if (last == furthest) sink_.Remove(last->parent, last->node);
        sink_.Insert(clone->container, last->node, nullptr);
        last->parent = clone->container;
        last = clone;
        node = clone;
      }
      if (last == furthest) sink_.Remove(last->parent, last->node);
      InsertAt(last, AppropriatePlace(common));
      Element* clone = CloneElement(fe, end_tag_end);
      sink_.MoveChildren(furthest->container, clone->container);
      Reparent(furthest->container, clone->container);
      sink_.Insert(furthest->container, clone->node, nullptr);
      clone->parent = furthest->container;
      // The clone takes fe's place in the list (at the bookmark) ...
      auto fe_at = std::find(formatting_.begin(), formatting_.end(), fe);
      size_t fe_pos = static_cast<size_t>(fe_at - formatting_.begin());
      formatting_.erase(fe_at);
      if (bookmark > fe_pos) --bookmark;
      formatting_.insert(formatting_.begin() + static_cast<ptrdiff_t>(std::min(bookmark, formatting_.size())), clone);
      Ref(clone);
      Unref(fe);
      // ... and goes on the stack right after the furthest block.
      RemoveFromStack(fe);
      const int fb_now = IndexOnStack(furthest);
      stack_.insert(stack_.begin() + fb_now + 1, clone);
      clone->on_stack = true;
      Ref(clone);
      if (clone->IsHtml()) ++open_counts_[static_cast<size_t>(clone->tag)];
    }
    return true;
  }

  // After the children of `from` moved to `to`: the records of those that
  // the builder still refers to follow.
  void Reparent(SinkNode from, SinkNode to) {
    for (Element* e : stack_) {
      if (e->parent == from) e->parent = to;
    }
    for (Element* e : formatting_) {
      if (e != nullptr && e->parent == from) e->parent = to;
    }
  }

  static bool IsSpecial(const Element* e) {
    if (e->IsHtml()) return IsSpecialTag(e->tag);
    if (e->ns == Namespace::kMathml) {
      return e->tag == k_mi || e->tag == k_mo || e->tag == k_mn || e->tag == k_ms || e->tag == k_mtext ||
             e->tag == k_annotation_xml;
    }
    return e->tag == k_foreignobject || e->tag == k_desc || e->tag == k_title;
  }

  // ----------------------------------------------------------- modes

  void ResetInsertionMode() {
    for (size_t i = stack_.size(); i-- > 0;) {
      const bool last = i == 0;
      const Element* node = stack_[i];
      if (last && context_ != nullptr) node = context_;
      if (node->IsHtml()) {
        switch (node->tag) {
          case k_td:
          case k_th:
            if (!last) {
              mode_ = Mode::kInCell;
              return;
            }
            break;
          case k_tr:
            mode_ = Mode::kInRow;
            return;
          case k_tbody:
          case k_thead:
          case k_tfoot:
            mode_ = Mode::kInTableBody;
            return;
          case k_caption:
            mode_ = Mode::kInCaption;
            return;
          case k_colgroup:
            mode_ = Mode::kInColumnGroup;
            return;
          case k_table:
            mode_ = Mode::kInTable;
            return;
          case k_template:
            mode_ = template_modes_.back();
            return;
          case k_head:
            if (!last) {
              mode_ = Mode::kInHead;
              return;
            }
            break;
          case k_body:
            mode_ = Mode::kInBody;
            return;
          case k_frameset:
            mode_ = Mode::kInFrameset;
            return;
          case k_html:
            mode_ = head_ == nullptr ? Mode::kBeforeHead : Mode::kAfterHead;
            return;
          default:
            break;
        }
      }
      if (last) {
        mode_ = Mode::kInBody;
        return;
      }
    }
    mode_ = Mode::kInBody;
  }

  void StartFragment(std::string_view context, Namespace ns) {
    context_ = NewRecord();
    Ref(context_);
    context_->ns = ns;
    std::string lower(context);
    for (char& c : lower) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c;
    context_->tag = LookupTag(lower);
    context_->owned_name.assign(ns == Namespace::kSvg ? AdjustSvgTagName(context) : context);
    context_->name = context_->owned_name;
    if (ns == Namespace::kSvg) {
      context_->html_integration_point =
          context_->tag == k_foreignobject || context_->tag == k_desc || context_->tag == k_title;
    }
    Element* html = CreateElement(k_html, "html", Namespace::kHtml, {}, 0, 0);
    InsertAt(html, {nullptr, nullptr});
    Push(html);
    if (context_->Is(k_template)) template_modes_.push_back(Mode::kInTemplate);
    if (ns == Namespace::kHtml) {
      switch (context_->tag) {
        case k_title:
        case k_textarea:
          tokenizer_.SetState(TokenizerState::kRcdata);
          break;
        case k_style:
        case k_xmp:
        case k_iframe:
        case k_noembed:
        case k_noframes:
          tokenizer_.SetState(TokenizerState::kRawtext);
          break;
        case k_script:
          tokenizer_.SetState(TokenizerState::kScriptData);
          break;
        case k_noscript:
          if (scripting_) tokenizer_.SetState(TokenizerState::kRawtext);
          break;
        case k_plaintext:
          tokenizer_.SetState(TokenizerState::kPlaintext);
          break;
        default:
          break;
      }
    }
    ResetInsertionMode();
    if (context_->Is(k_form)) {
      form_ = context_;
      Ref(form_);
    }
  }

  // Switches to the text mode for a raw-text or RCDATA element just
  // inserted.
  void StartText(TokenizerState state) {
    tokenizer_.SetState(state);
    original_mode_ = mode_;
    mode_ = Mode::kText;
  }
  void GenericText(const Token& t, TokenizerState state) {
    InsertHtml(t);
    StartText(state);
  }

  // ----------------------------------------------------- dispatching

  void Process(Token& t) {
    attributes_.clear();
    if (t.type == TokenType::kStartTag) {
      for (const TokenAttribute& a : t.attributes) attributes_.push_back({a.name, a.value});
      // The nesting cap: a start tag that would open one more level past
      // the limit is dropped (void and raw-text elements, and foreign
      // elements that close themselves, are never open for long).
      if (stack_.size() >= TreeBuilder::kMaxDepth && !t.self_closing && !IsVoidOrRawText(t.tag)) {
        skip_newline_ = false;
        return;
      }
    }
    if (t.type == TokenType::kCharacters) {
      Text text{t.data, t.begin, t.end, t.data_in_input};
      if (skip_newline_) {
        skip_newline_ = false;
        if (!text.empty() && text.chars[0] == '\n') text = text.Sub(1);
      }
      while (!text.empty()) text = DispatchCharacters(text);
      return;
    }
    skip_newline_ = false;
    while (Dispatch(t)) {
    }
  }

  bool UseHtmlRules(const Token& t) const {
    const Element* node = AdjustedCurrent();
    if (node == nullptr || node->IsHtml()) return true;
    if (t.type == TokenType::kEndOfFile) return true;
    const bool start = t.type == TokenType::kStartTag;
    if (IsMathmlTextIntegrationPoint(node)) {
      if (start && t.tag != k_mglyph && t.tag != k_malignmark) return true;
      if (t.type == TokenType::kCharacters) return true;
    }
    if (node->ns == Namespace::kMathml && node->tag == k_annotation_xml && start && t.tag == k_svg) return true;
    if (node->html_integration_point && (start || t.type == TokenType::kCharacters)) return true;
    return false;
  }
  bool UseHtmlRulesForCharacters() const {
    const Element* node = AdjustedCurrent();
    return node == nullptr || node->IsHtml() || IsMathmlTextIntegrationPoint(node) || node->html_integration_point;
  }
  static bool IsMathmlTextIntegrationPoint(const Element* e) {
    return e->ns == Namespace::kMathml &&
           (e->tag == k_mi || e->tag == k_mo || e->tag == k_mn || e->tag == k_ms || e->tag == k_mtext);
  }

  // Handles `t` once; returns true to handle it again (the mode changed).
  bool Dispatch(Token& t) {
    if (!UseHtmlRules(t)) return ForeignContent(t);
    return DispatchMode(t, mode_);
  }

  bool DispatchMode(Token& t, Mode mode) {
    switch (mode) {
      case Mode::kInitial: return Initial(t);
      case Mode::kBeforeHtml: return BeforeHtml(t);
      case Mode::kBeforeHead: return BeforeHead(t);
      case Mode::kInHead: return InHead(t);
      case Mode::kInHeadNoscript: return InHeadNoscript(t);
      case Mode::kAfterHead: return AfterHead(t);
      case Mode::kInBody: return InBody(t);
      case Mode::kText: return InText(t);
      case Mode::kInTable: return InTable(t);
      case Mode::kInTableText: return InTableText(t);
      case Mode::kInCaption: return InCaption(t);
      case Mode::kInColumnGroup: return InColumnGroup(t);
      case Mode::kInTableBody: return InTableBody(t);
      case Mode::kInRow: return InRow(t);
      case Mode::kInCell: return InCell(t);
      case Mode::kInTemplate: return InTemplate(t);
      case Mode::kAfterBody: return AfterBody(t);
      case Mode::kInFrameset: return InFrameset(t);
      case Mode::kAfterFrameset: return AfterFrameset(t);
      case Mode::kAfterAfterBody: return AfterAfterBody(t);
      case Mode::kAfterAfterFrameset: return AfterAfterFrameset(t);
    }
    return false;
  }

  // Characters: each handler takes a leading part of `text` and returns
  // the rest, to be handled again (possibly in another mode).
  Text DispatchCharacters(Text text) {
    if (!UseHtmlRulesForCharacters()) return ForeignCharacters(text);
    return CharactersInMode(text, mode_);
  }

  Text CharactersInMode(Text text, Mode mode) {
    switch (mode) {
      case Mode::kInitial:
      case Mode::kBeforeHtml:
      case Mode::kBeforeHead: {
        const size_t n = SpacePrefix(text.chars);
        if (n > 0) return text.Sub(n);
        if (mode == Mode::kInitial) {
          quirks_ = true;
          mode_ = Mode::kBeforeHtml;
        } else if (mode == Mode::kBeforeHtml) {
          ImplyHtml(text.begin);
        } else {
          ImplyHead(text.begin);
        }
        return text;
      }
      case Mode::kInHead:
      case Mode::kInHeadNoscript:
      case Mode::kAfterHead: {
        const size_t n = SpacePrefix(text.chars);
        if (n > 0) {
          InsertText(text.Sub(0, n));
          return text.Sub(n);
        }
        if (mode == Mode::kInHead) {
          Pop();
          mode_ = Mode::kAfterHead;
        } else if (mode == Mode::kInHeadNoscript) {
          Pop();
          mode_ = Mode::kInHead;
        } else {
          InsertImplied(k_body, text.begin);
          mode_ = Mode::kInBody;
        }
        return text;
      }
      case Mode::kInBody:
      case Mode::kInCaption:
      case Mode::kInCell:
      case Mode::kInTemplate:
        BodyCharacters(text);
        return {};
      case Mode::kText:
        InsertText(text);
        return {};
      case Mode::kInTable:
      case Mode::kInTableBody:
      case Mode::kInRow:
        if (Current()->IsHtml() && (Current()->tag == k_table || Current()->tag == k_tbody ||
                                    Current()->tag == k_template || Current()->tag == k_tfoot ||
                                    Current()->tag == k_thead || Current()->tag == k_tr)) {
          pending_text_.clear();
          pending_has_text_ = false;
          pending_begin_ = text.begin;
          original_mode_ = mode_;
          mode_ = Mode::kInTableText;
          return text;
        }
        foster_parenting_ = true;
        BodyCharacters(text);
        foster_parenting_ = false;
        return {};
      case Mode::kInTableText:
        for (char c : text.chars) {
          if (c == '\0') continue;
          pending_text_.push_back(c);
          pending_has_text_ = pending_has_text_ || !IsSpace(c);
        }
        pending_end_ = text.end;
        return {};
      case Mode::kInColumnGroup: {
        const size_t n = SpacePrefix(text.chars);
        if (n > 0) {
          InsertText(text.Sub(0, n));
          return text.Sub(n);
        }
        if (!CurrentIs(k_colgroup)) return {};  // ignored (a template's columns)
        Pop();
        mode_ = Mode::kInTable;
        return text;
      }
      case Mode::kAfterBody:
      case Mode::kAfterAfterBody: {
        const size_t n = SpacePrefix(text.chars);
        if (n > 0) {
          BodyCharacters(text.Sub(0, n));
          return text.Sub(n);
        }
        mode_ = Mode::kInBody;
        return text;
      }
      case Mode::kInFrameset:
      case Mode::kAfterFrameset:
      case Mode::kAfterAfterFrameset: {
        // Only white space is kept (not after the frameset's end).
        std::string& kept = scratch_text_;
        kept.clear();
        for (char c : text.chars) {
          if (IsSpace(c)) kept.push_back(c);
        }
        if (mode == Mode::kAfterAfterFrameset) {
          if (!kept.empty()) BodyCharacters({kept, text.begin, text.end, false});
        } else {
          InsertText({kept, text.begin, text.end, false});
        }
        return {};
      }
    }
    return {};
  }

  Text WithoutNuls(Text text) {
    if (text.chars.find('\0') == std::string_view::npos) return text;
    scratch_text_.clear();
    for (char c : text.chars) {
      if (c != '\0') scratch_text_.push_back(c);
    }
    return {scratch_text_, text.begin, text.end, false};
  }

  void BodyCharacters(Text text) {
    text = WithoutNuls(text);
    if (text.empty()) return;
    ReconstructFormatting(text.begin);
    InsertText(text);
    if (frameset_ok_ && !AllSpace(text.chars)) frameset_ok_ = false;
  }

  void FlushTableText() {
    if (!pending_text_.empty()) {
      const Text text{pending_text_, pending_begin_, pending_end_, false};
      if (pending_has_text_) {
        foster_parenting_ = true;
        BodyCharacters(text);
        foster_parenting_ = false;
      } else {
        InsertText(text);
      }
    }
    pending_text_.clear();
    mode_ = original_mode_;
  }

  Text ForeignCharacters(Text text) {
    if (text.chars.find('\0') != std::string_view::npos) {
      scratch_text_.clear();
      for (char c : text.chars) {
        if (c == '\0') {
          scratch_text_.append("\xEF\xBF\xBD");
        } else {
          scratch_text_.push_back(c);
        }
      }
      text = {scratch_text_, text.begin, text.end, false};
    }
    // U+FFFD stands for NULs here, which do not count as text for frameset-ok.
    if (frameset_ok_ && text.chars.find_first_not_of(" \t\n\f\r\xEF\xBF\xBD") != std::string_view::npos) {
      frameset_ok_ = false;
    }
    InsertText(text);
    return {};
  }

  // ------------------------------------------------------ the modes

  bool Initial(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t, nullptr);
        return false;
      case TokenType::kDoctype:
        sink_.AppendDoctype(t.has_name ? t.data : std::string_view(), t.has_public_id ? t.public_id : std::string_view(),
                            t.has_system_id ? t.system_id : std::string_view());
        quirks_ = IsQuirksDoctype(t);
        mode_ = Mode::kBeforeHtml;
        return false;
      default:
        quirks_ = true;
        mode_ = Mode::kBeforeHtml;
        return true;
    }
  }

  void ImplyHtml(uint32_t at) {
    Element* html = CreateElement(k_html, "html", Namespace::kHtml, {}, at, at);
    InsertAt(html, {nullptr, nullptr});
    Push(html);
    mode_ = Mode::kBeforeHead;
  }
  void ImplyHead(uint32_t at) {
    head_ = InsertImplied(k_head, at);
    Ref(head_);
    mode_ = Mode::kInHead;
  }

  bool BeforeHtml(Token& t) {
    switch (t.type) {
      case TokenType::kDoctype:
        return false;
      case TokenType::kComment:
        InsertComment(t, nullptr);
        return false;
      case TokenType::kStartTag:
        if (t.tag == k_html) {
          Element* html = CreateElement(k_html, "html", Namespace::kHtml, attributes_, t.begin, t.end);
          InsertAt(html, {nullptr, nullptr});
          Push(html);
          mode_ = Mode::kBeforeHead;
          return false;
        }
        break;
      case TokenType::kEndTag:
        if (t.tag != k_head && t.tag != k_body && t.tag != k_html && t.tag != k_br) return false;
        break;
      default:
        break;
    }
    ImplyHtml(t.begin);
    return true;
  }

  bool BeforeHead(Token& t) {
    switch (t.type) {
      case TokenType::kDoctype:
        return false;
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        if (t.tag == k_head) {
          head_ = InsertHtml(t);
          Ref(head_);
          mode_ = Mode::kInHead;
          return false;
        }
        break;
      case TokenType::kEndTag:
        if (t.tag != k_head && t.tag != k_body && t.tag != k_html && t.tag != k_br) return false;
        break;
      default:
        break;
    }
    ImplyHead(t.begin);
    return true;
  }

  bool InHead(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_html:
            return InBody(t);
          case k_base:
          case k_basefont:
          case k_bgsound:
          case k_link:
          case k_meta:
            InsertVoid(t);
            return false;
          case k_title:
            GenericText(t, TokenizerState::kRcdata);
            return false;
          case k_noscript:
            if (scripting_) {
              GenericText(t, TokenizerState::kRawtext);
            } else {
              InsertHtml(t);
              mode_ = Mode::kInHeadNoscript;
            }
            return false;
          case k_noframes:
          case k_style:
            GenericText(t, TokenizerState::kRawtext);
            return false;
          case k_script:
            InsertHtml(t);
            StartText(TokenizerState::kScriptData);
            return false;
          case k_template:
            InsertHtml(t);
            PushMarker();
            frameset_ok_ = false;
            mode_ = Mode::kInTemplate;
            template_modes_.push_back(Mode::kInTemplate);
            return false;
          case k_head:
            return false;
          default:
            break;
        }
        break;
      case TokenType::kEndTag:
        switch (t.tag) {
          case k_head:
            sink_.SetEndTag(Current()->node, t.end);
            Pop();
            mode_ = Mode::kAfterHead;
            return false;
          case k_body:
          case k_html:
          case k_br:
            break;
          case k_template:
            if (!IsOpen(k_template)) return false;
            GenerateImpliedEndTagsThoroughly();
            PopUntil(k_template, t.end);
            ClearFormattingToMarker();
            template_modes_.pop_back();
            ResetInsertionMode();
            return false;
          default:
            return false;
        }
        break;
      default:
        break;
    }
    Pop();
    mode_ = Mode::kAfterHead;
    return true;
  }

  bool InHeadNoscript(Token& t) {
    switch (t.type) {
      case TokenType::kDoctype:
        return false;
      case TokenType::kComment:
        return InHead(t);
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_html:
            return InBody(t);
          case k_basefont:
          case k_bgsound:
          case k_link:
          case k_meta:
          case k_noframes:
          case k_style:
            return InHead(t);
          case k_head:
          case k_noscript:
            return false;
          default:
            break;
        }
        break;
      case TokenType::kEndTag:
        if (t.tag == k_noscript) {
          sink_.SetEndTag(Current()->node, t.end);
          Pop();
          mode_ = Mode::kInHead;
          return false;
        }
        if (t.tag != k_br) return false;
        break;
      default:
        break;
    }
    Pop();
    mode_ = Mode::kInHead;
    return true;
  }

  bool AfterHead(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_html:
            return InBody(t);
          case k_body:
            InsertHtml(t);
            frameset_ok_ = false;
            mode_ = Mode::kInBody;
            return false;
          case k_frameset:
            InsertHtml(t);
            mode_ = Mode::kInFrameset;
            return false;
          case k_base:
          case k_basefont:
          case k_bgsound:
          case k_link:
          case k_meta:
          case k_noframes:
          case k_script:
          case k_style:
          case k_template:
          case k_title: {
            Element* head = head_;
            Push(head);
            InHead(t);
            RemoveFromStack(head);
            return false;
          }
          case k_head:
            return false;
          default:
            break;
        }
        break;
      case TokenType::kEndTag:
        if (t.tag == k_template) return InHead(t);
        if (t.tag != k_body && t.tag != k_html && t.tag != k_br) return false;
        break;
      default:
        break;
    }
    InsertImplied(k_body, t.begin);
    mode_ = Mode::kInBody;
    return true;
  }

  bool InBody(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        return BodyStartTag(t);
      case TokenType::kEndTag:
        return BodyEndTag(t);
      case TokenType::kEndOfFile:
        if (!template_modes_.empty()) return InTemplate(t);
        return false;
      default:
        return false;
    }
  }

  bool BodyStartTag(Token& t) {
    switch (t.tag) {
      case k_html:
        if (IsOpen(k_template)) return false;
        sink_.AddMissingAttributes(stack_[0]->node, attributes_);
        return false;
      case k_base:
      case k_basefont:
      case k_bgsound:
      case k_link:
      case k_meta:
      case k_noframes:
      case k_script:
      case k_style:
      case k_template:
      case k_title:
        return InHead(t);
      case k_body:
        if (stack_.size() == 1 || !stack_[1]->Is(k_body) || IsOpen(k_template)) return false;
        frameset_ok_ = false;
        sink_.AddMissingAttributes(stack_[1]->node, attributes_);
        return false;
      case k_frameset:
        if (stack_.size() == 1 || !stack_[1]->Is(k_body) || !frameset_ok_) return false;
        sink_.Remove(stack_[1]->parent, stack_[1]->node);
        while (stack_.size() > 1) Pop();
        InsertHtml(t);
        mode_ = Mode::kInFrameset;
        return false;
      case k_address:
      case k_article:
      case k_aside:
      case k_blockquote:
      case k_center:
      case k_details:
      case k_dialog:
      case k_dir:
      case k_div:
      case k_dl:
      case k_fieldset:
      case k_figcaption:
      case k_figure:
      case k_footer:
      case k_header:
      case k_hgroup:
      case k_main:
      case k_menu:
      case k_nav:
      case k_ol:
      case k_p:
      case k_search:
      case k_section:
      case k_summary:
      case k_ul:
        ClosePIfInButtonScope();
        InsertHtml(t);
        return false;
      case k_h1:
      case k_h2:
      case k_h3:
      case k_h4:
      case k_h5:
      case k_h6:
        ClosePIfInButtonScope();
        if (Current()->IsHtml() && IsHeading(Current()->tag)) Pop();
        InsertHtml(t);
        return false;
      case k_pre:
      case k_listing:
        ClosePIfInButtonScope();
        InsertHtml(t);
        skip_newline_ = true;
        frameset_ok_ = false;
        return false;
      case k_form:
        if (form_ != nullptr && !IsOpen(k_template)) return false;
        ClosePIfInButtonScope();
        {
          Element* form = InsertHtml(t);
          if (!IsOpen(k_template)) {
            form_ = form;
            Ref(form_);
          }
        }
        return false;
      case k_li:
      case k_dd:
      case k_dt: {
        frameset_ok_ = false;
        for (size_t i = stack_.size(); i-- > 0;) {
          const Element* node = stack_[i];
          const bool match = t.tag == k_li ? node->Is(k_li) : (node->Is(k_dd) || node->Is(k_dt));
          if (match) {
            const TagId tag = node->tag;
            GenerateImpliedEndTags(tag);
            PopUntil(tag);
            break;
          }
          if (IsSpecial(node) && !node->Is(k_address) && !node->Is(k_div) && !node->Is(k_p)) break;
        }
        ClosePIfInButtonScope();
        InsertHtml(t);
        return false;
      }
      case k_plaintext:
        ClosePIfInButtonScope();
        InsertHtml(t);
        tokenizer_.SetState(TokenizerState::kPlaintext);
        return false;
      case k_button:
        if (InScope(k_button)) {
          GenerateImpliedEndTags();
          PopUntil(k_button);
        }
        ReconstructFormatting(t.begin);
        InsertHtml(t);
        frameset_ok_ = false;
        return false;
      case k_a: {
        for (size_t i = formatting_.size(); i-- > 0;) {
          Element* e = formatting_[i];
          if (e == nullptr) break;
          if (e->Is(k_a)) {
            Ref(e);
            if (!AdoptionAgency(k_a, 0)) AnyOtherEndTag(k_a, "a", 0);
            RemoveFromFormatting(e);
            if (e->on_stack) RemoveFromStack(e);
            Unref(e);
            break;
          }
        }
        ReconstructFormatting(t.begin);
        PushFormattingElement(t);
        return false;
      }
      case k_b:
      case k_big:
      case k_code:
      case k_em:
      case k_font:
      case k_i:
      case k_s:
      case k_small:
      case k_strike:
      case k_strong:
      case k_tt:
      case k_u:
        ReconstructFormatting(t.begin);
        PushFormattingElement(t);
        return false;
      case k_nobr:
        ReconstructFormatting(t.begin);
        if (InScope(k_nobr)) {
          if (!AdoptionAgency(k_nobr, 0)) AnyOtherEndTag(k_nobr, "nobr", 0);
          ReconstructFormatting(t.begin);
        }
        PushFormattingElement(t);
        return false;
      case k_applet:
      case k_marquee:
      case k_object:
        ReconstructFormatting(t.begin);
        InsertHtml(t);
        PushMarker();
        frameset_ok_ = false;
        return false;
      case k_table:
        if (!quirks_) ClosePIfInButtonScope();
        InsertHtml(t);
        frameset_ok_ = false;
        mode_ = Mode::kInTable;
        return false;
      case k_area:
      case k_br:
      case k_embed:
      case k_img:
      case k_keygen:
      case k_wbr:
        ReconstructFormatting(t.begin);
        InsertVoid(t);
        frameset_ok_ = false;
        return false;
      case k_input:
        if (context_ != nullptr && context_->Is(k_select)) return false;
        if (InScope(k_select)) PopUntil(k_select);
        ReconstructFormatting(t.begin);
        InsertVoid(t);
        if (!IsHiddenInput()) frameset_ok_ = false;
        return false;
      case k_param:
      case k_source:
      case k_track:
        InsertVoid(t);
        return false;
      case k_hr:
        ClosePIfInButtonScope();
        if (InScope(k_select)) GenerateImpliedEndTags();
        InsertVoid(t);
        frameset_ok_ = false;
        return false;
      case k_image:
        t.tag = k_img;
        t.data = "img";
        return true;
      case k_textarea:
        InsertHtml(t);
        skip_newline_ = true;
        frameset_ok_ = false;
        StartText(TokenizerState::kRcdata);
        return false;
      case k_xmp:
        ClosePIfInButtonScope();
        ReconstructFormatting(t.begin);
        frameset_ok_ = false;
        GenericText(t, TokenizerState::kRawtext);
        return false;
      case k_iframe:
        frameset_ok_ = false;
        GenericText(t, TokenizerState::kRawtext);
        return false;
      case k_noembed:
        GenericText(t, TokenizerState::kRawtext);
        return false;
      case k_noscript:
        if (scripting_) {
          GenericText(t, TokenizerState::kRawtext);
          return false;
        }
        break;
      case k_select:
        // A select does not nest: a second one closes the first.
        if (context_ != nullptr && context_->Is(k_select)) return false;
        if (InScope(k_select)) {
          PopUntil(k_select);
          return false;
        }
        ReconstructFormatting(t.begin);
        InsertHtml(t);
        frameset_ok_ = false;
        return false;
      case k_option:
      case k_optgroup:
        if (InScope(k_select)) {
          GenerateImpliedEndTags(t.tag == k_option ? k_optgroup : kTagUnknown);
        } else if (CurrentIs(k_option)) {
          Pop();
        }
        ReconstructFormatting(t.begin);
        InsertHtml(t);
        return false;
      case k_rb:
      case k_rtc:
        if (InScope(k_ruby)) GenerateImpliedEndTags();
        InsertHtml(t);
        return false;
      case k_rp:
      case k_rt:
        if (InScope(k_ruby)) GenerateImpliedEndTags(k_rtc);
        InsertHtml(t);
        return false;
      case k_math:
      case k_svg:
        ReconstructFormatting(t.begin);
        InsertForeign(t, t.tag == k_math ? Namespace::kMathml : Namespace::kSvg);
        return false;
      case k_caption:
      case k_col:
      case k_colgroup:
      case k_frame:
      case k_head:
      case k_tbody:
      case k_td:
      case k_tfoot:
      case k_th:
      case k_thead:
      case k_tr:
        return false;
      default:
        break;
    }
    ReconstructFormatting(t.begin);
    InsertHtml(t);
    return false;
  }

  void PushFormattingElement(const Token& t) {
    Element* e = InsertHtml(t);
    SaveAttributes(e, attributes_);
    PushFormatting(e);
  }

  bool IsHiddenInput() const {
    for (const SinkAttribute& a : attributes_) {
      if (a.name == "type") return EqualsIgnoreCase(a.value, "hidden");
    }
    return false;
  }

  void InsertForeign(const Token& t, Namespace ns) {
    for (SinkAttribute& a : attributes_) a = AdjustForeignAttribute(ns, a);
    Insert(t.tag, t.data, ns, attributes_, t.begin, t.end);
    if (t.self_closing) Pop();
  }

  bool BodyEndTag(Token& t) {
    switch (t.tag) {
      case k_template:
        return InHead(t);
      case k_body:
      case k_html:
        if (!InScope(k_body)) return false;
        if (Element* body = FindOnStack(k_body)) sink_.SetEndTag(body->node, t.end);
        mode_ = Mode::kAfterBody;
        return t.tag == k_html;
      case k_address:
      case k_article:
      case k_aside:
      case k_blockquote:
      case k_button:
      case k_center:
      case k_details:
      case k_dialog:
      case k_dir:
      case k_div:
      case k_dl:
      case k_fieldset:
      case k_figcaption:
      case k_figure:
      case k_footer:
      case k_header:
      case k_hgroup:
      case k_listing:
      case k_main:
      case k_menu:
      case k_nav:
      case k_ol:
      case k_pre:
      case k_search:
      case k_section:
      case k_select:
      case k_summary:
      case k_ul:
        if (!InScope(t.tag)) return false;
        GenerateImpliedEndTags();
        PopUntil(t.tag, t.end);
        return false;
      case k_form:
        if (!IsOpen(k_template)) {
          Element* node = form_;
          form_ = nullptr;
          if (node == nullptr || !NodeInScope(node)) {
            Unref(node);
            return false;
          }
          GenerateImpliedEndTags();
          sink_.SetEndTag(node->node, t.end);
          RemoveFromStack(node);
          Unref(node);
          return false;
        }
        if (!InScope(k_form)) return false;
        GenerateImpliedEndTags();
        PopUntil(k_form, t.end);
        return false;
      case k_p:
        if (!InScope(k_p, Scope::kButton)) InsertImplied(k_p, t.begin);
        ClosePIfInButtonScope(t.end);
        return false;
      case k_li:
        if (!InScope(k_li, Scope::kListItem)) return false;
        GenerateImpliedEndTags(k_li);
        PopUntil(k_li, t.end);
        return false;
      case k_dd:
      case k_dt:
        if (!InScope(t.tag)) return false;
        GenerateImpliedEndTags(t.tag);
        PopUntil(t.tag, t.end);
        return false;
      case k_h1:
      case k_h2:
      case k_h3:
      case k_h4:
      case k_h5:
      case k_h6:
        if (!HeadingInScope()) return false;
        GenerateImpliedEndTags();
        PopUntilHeading(t.end);
        return false;
      case k_a:
      case k_b:
      case k_big:
      case k_code:
      case k_em:
      case k_font:
      case k_i:
      case k_nobr:
      case k_s:
      case k_small:
      case k_strike:
      case k_strong:
      case k_tt:
      case k_u:
        if (AdoptionAgency(t.tag, t.end)) return false;
        break;
      case k_applet:
      case k_marquee:
      case k_object:
        if (!InScope(t.tag)) return false;
        GenerateImpliedEndTags();
        PopUntil(t.tag, t.end);
        ClearFormattingToMarker();
        return false;
      case k_br:
        attributes_.clear();
        t.type = TokenType::kStartTag;
        t.self_closing = false;
        return true;
      default:
        break;
    }
    AnyOtherEndTag(t.tag, t.data, t.end);
    return false;
  }

  // An end tag with no rule of its own closes the innermost element of its
  // name, unless a special element comes first.
  void AnyOtherEndTag(TagId tag, std::string_view name, uint32_t end_tag_end) {
    for (size_t i = stack_.size(); i-- > 0;) {
      Element* node = stack_[i];
      if (node->IsHtml() && (tag != kTagUnknown ? node->tag == tag : node->name == name)) {
        GenerateImpliedEndTags(node->tag);
        if (end_tag_end != 0) sink_.SetEndTag(node->node, end_tag_end);
        while (Current() != node) Pop();
        Pop();
        return;
      }
      if (IsSpecial(node)) return;
    }
  }

  bool InText(Token& t) {
    if (t.type == TokenType::kEndOfFile) {
      Pop();
      mode_ = original_mode_;
      return true;
    }
    if (t.type == TokenType::kEndTag) {
      sink_.SetEndTag(Current()->node, t.end);
      Pop();
      mode_ = original_mode_;
    }
    return false;
  }

  bool InTable(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_caption:
            ClearStackBackTo({k_table, k_template});
            PushMarker();
            InsertHtml(t);
            mode_ = Mode::kInCaption;
            return false;
          case k_colgroup:
            ClearStackBackTo({k_table, k_template});
            InsertHtml(t);
            mode_ = Mode::kInColumnGroup;
            return false;
          case k_col:
            ClearStackBackTo({k_table, k_template});
            InsertImplied(k_colgroup, t.begin);
            mode_ = Mode::kInColumnGroup;
            return true;
          case k_tbody:
          case k_tfoot:
          case k_thead:
            ClearStackBackTo({k_table, k_template});
            InsertHtml(t);
            mode_ = Mode::kInTableBody;
            return false;
          case k_td:
          case k_th:
          case k_tr:
            ClearStackBackTo({k_table, k_template});
            InsertImplied(k_tbody, t.begin);
            mode_ = Mode::kInTableBody;
            return true;
          case k_table:
            if (!InScope(k_table, Scope::kTable)) return false;
            PopUntil(k_table);
            ResetInsertionMode();
            return true;
          case k_style:
          case k_script:
          case k_template:
            return InHead(t);
          case k_input:
            if (!IsHiddenInput()) break;
            InsertVoid(t);
            return false;
          case k_form:
            if (IsOpen(k_template) || form_ != nullptr) return false;
            form_ = InsertHtml(t);
            Ref(form_);
            Pop();
            return false;
          default:
            break;
        }
        break;
      case TokenType::kEndTag:
        switch (t.tag) {
          case k_table:
            if (!InScope(k_table, Scope::kTable)) return false;
            PopUntil(k_table, t.end);
            ResetInsertionMode();
            return false;
          case k_body:
          case k_caption:
          case k_col:
          case k_colgroup:
          case k_html:
          case k_tbody:
          case k_td:
          case k_tfoot:
          case k_th:
          case k_thead:
          case k_tr:
            return false;
          case k_template:
            return InHead(t);
          default:
            break;
        }
        break;
      case TokenType::kEndOfFile:
        return InBody(t);
      default:
        break;
    }
    foster_parenting_ = true;
    const bool again = InBody(t);
    foster_parenting_ = false;
    return again;
  }

  bool InTableText(Token& t) {
    FlushTableText();
    (void)t;
    return true;
  }

  bool InCaption(Token& t) {
    const bool start = t.type == TokenType::kStartTag;
    const bool end = t.type == TokenType::kEndTag;
    if (end && t.tag == k_caption) {
      if (!InScope(k_caption, Scope::kTable)) return false;
      GenerateImpliedEndTags();
      PopUntil(k_caption, t.end);
      ClearFormattingToMarker();
      mode_ = Mode::kInTable;
      return false;
    }
    if ((start && (t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup || t.tag == k_tbody ||
                   t.tag == k_td || t.tag == k_tfoot || t.tag == k_th || t.tag == k_thead || t.tag == k_tr)) ||
        (end && t.tag == k_table)) {
      if (!InScope(k_caption, Scope::kTable)) return false;
      GenerateImpliedEndTags();
      PopUntil(k_caption);
      ClearFormattingToMarker();
      mode_ = Mode::kInTable;
      return true;
    }
    if (end && (t.tag == k_body || t.tag == k_col || t.tag == k_colgroup || t.tag == k_html || t.tag == k_tbody ||
                t.tag == k_td || t.tag == k_tfoot || t.tag == k_th || t.tag == k_thead || t.tag == k_tr)) {
      return false;
    }
    return InBody(t);
  }

  bool InColumnGroup(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        if (t.tag == k_col) {
          InsertVoid(t);
          return false;
        }
        if (t.tag == k_template) return InHead(t);
        break;
      case TokenType::kEndTag:
        if (t.tag == k_colgroup) {
          if (!CurrentIs(k_colgroup)) return false;
          sink_.SetEndTag(Current()->node, t.end);
          Pop();
          mode_ = Mode::kInTable;
          return false;
        }
        if (t.tag == k_col) return false;
        if (t.tag == k_template) return InHead(t);
        break;
      case TokenType::kEndOfFile:
        return InBody(t);
      default:
        break;
    }
    if (!CurrentIs(k_colgroup)) return false;
    Pop();
    mode_ = Mode::kInTable;
    return true;
  }

  bool TableBodyInScope() const {
    return InScope(k_tbody, Scope::kTable) || InScope(k_thead, Scope::kTable) || InScope(k_tfoot, Scope::kTable);
  }

  bool InTableBody(Token& t) {
    const bool start = t.type == TokenType::kStartTag;
    const bool end = t.type == TokenType::kEndTag;
    if (start && t.tag == k_tr) {
      ClearStackBackTo({k_tbody, k_tfoot, k_thead, k_template});
      InsertHtml(t);
      mode_ = Mode::kInRow;
      return false;
    }
    if (start && (t.tag == k_th || t.tag == k_td)) {
      ClearStackBackTo({k_tbody, k_tfoot, k_thead, k_template});
      InsertImplied(k_tr, t.begin);
      mode_ = Mode::kInRow;
      return true;
    }
    if (end && (t.tag == k_tbody || t.tag == k_tfoot || t.tag == k_thead)) {
      if (!InScope(t.tag, Scope::kTable)) return false;
      ClearStackBackTo({k_tbody, k_tfoot, k_thead, k_template});
      sink_.SetEndTag(Current()->node, t.end);
      Pop();
      mode_ = Mode::kInTable;
      return false;
    }
    if ((start && (t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup || t.tag == k_tbody ||
                   t.tag == k_tfoot || t.tag == k_thead)) ||
        (end && t.tag == k_table)) {
      if (!TableBodyInScope()) return false;
      ClearStackBackTo({k_tbody, k_tfoot, k_thead, k_template});
      Pop();
      mode_ = Mode::kInTable;
      return true;
    }
    if (end && (t.tag == k_body || t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup ||
                t.tag == k_html || t.tag == k_td || t.tag == k_th || t.tag == k_tr)) {
      return false;
    }
    return InTable(t);
  }

  bool InRow(Token& t) {
    const bool start = t.type == TokenType::kStartTag;
    const bool end = t.type == TokenType::kEndTag;
    if (start && (t.tag == k_th || t.tag == k_td)) {
      ClearStackBackTo({k_tr, k_template});
      InsertHtml(t);
      mode_ = Mode::kInCell;
      PushMarker();
      return false;
    }
    if (end && t.tag == k_tr) {
      if (!InScope(k_tr, Scope::kTable)) return false;
      ClearStackBackTo({k_tr, k_template});
      sink_.SetEndTag(Current()->node, t.end);
      Pop();
      mode_ = Mode::kInTableBody;
      return false;
    }
    if ((start && (t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup || t.tag == k_tbody ||
                   t.tag == k_tfoot || t.tag == k_thead || t.tag == k_tr)) ||
        (end && t.tag == k_table)) {
      if (!InScope(k_tr, Scope::kTable)) return false;
      ClearStackBackTo({k_tr, k_template});
      Pop();
      mode_ = Mode::kInTableBody;
      return true;
    }
    if (end && (t.tag == k_tbody || t.tag == k_tfoot || t.tag == k_thead)) {
      if (!InScope(t.tag, Scope::kTable)) return false;
      if (!InScope(k_tr, Scope::kTable)) return false;
      ClearStackBackTo({k_tr, k_template});
      Pop();
      mode_ = Mode::kInTableBody;
      return true;
    }
    if (end && (t.tag == k_body || t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup ||
                t.tag == k_html || t.tag == k_td || t.tag == k_th)) {
      return false;
    }
    return InTable(t);
  }

  void CloseCell() {
    GenerateImpliedEndTags();
    PopUntilCell();
    ClearFormattingToMarker();
    mode_ = Mode::kInRow;
  }

  bool InCell(Token& t) {
    const bool start = t.type == TokenType::kStartTag;
    const bool end = t.type == TokenType::kEndTag;
    if (end && (t.tag == k_td || t.tag == k_th)) {
      if (!InScope(t.tag, Scope::kTable)) return false;
      GenerateImpliedEndTags();
      PopUntil(t.tag, t.end);
      ClearFormattingToMarker();
      mode_ = Mode::kInRow;
      return false;
    }
    if (start && (t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup || t.tag == k_tbody ||
                  t.tag == k_td || t.tag == k_tfoot || t.tag == k_th || t.tag == k_thead || t.tag == k_tr)) {
      if (!InScope(k_td, Scope::kTable) && !InScope(k_th, Scope::kTable)) return false;
      CloseCell();
      return true;
    }
    if (end && (t.tag == k_body || t.tag == k_caption || t.tag == k_col || t.tag == k_colgroup || t.tag == k_html)) {
      return false;
    }
    if (end && (t.tag == k_table || t.tag == k_tbody || t.tag == k_tfoot || t.tag == k_thead || t.tag == k_tr)) {
      if (!InScope(t.tag, Scope::kTable)) return false;
      CloseCell();
      return true;
    }
    return InBody(t);
  }

  void SwitchTemplateMode(Mode mode) {
    template_modes_.back() = mode;
    mode_ = mode;
  }

  bool InTemplate(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
      case TokenType::kDoctype:
        return InBody(t);
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_base:
          case k_basefont:
          case k_bgsound:
          case k_link:
          case k_meta:
          case k_noframes:
          case k_script:
          case k_style:
          case k_template:
          case k_title:
            return InHead(t);
          case k_caption:
          case k_colgroup:
          case k_tbody:
          case k_tfoot:
          case k_thead:
            SwitchTemplateMode(Mode::kInTable);
            return true;
          case k_col:
            SwitchTemplateMode(Mode::kInColumnGroup);
            return true;
          case k_tr:
            SwitchTemplateMode(Mode::kInTableBody);
            return true;
          case k_td:
          case k_th:
            SwitchTemplateMode(Mode::kInRow);
            return true;
          default:
            SwitchTemplateMode(Mode::kInBody);
            return true;
        }
      case TokenType::kEndTag:
        if (t.tag == k_template) return InHead(t);
        return false;
      case TokenType::kEndOfFile:
        if (!IsOpen(k_template)) return false;
        PopUntil(k_template);
        ClearFormattingToMarker();
        template_modes_.pop_back();
        ResetInsertionMode();
        return true;
      default:
        return false;
    }
  }

  bool AfterBody(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t, stack_[0]->container);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        break;
      case TokenType::kEndTag:
        if (t.tag == k_html) {
          if (context_ != nullptr) return false;
          mode_ = Mode::kAfterAfterBody;
          return false;
        }
        break;
      case TokenType::kEndOfFile:
        return false;
      default:
        break;
    }
    mode_ = Mode::kInBody;
    return true;
  }

  bool InFrameset(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kStartTag:
        switch (t.tag) {
          case k_html:
            return InBody(t);
          case k_frameset:
            InsertHtml(t);
            return false;
          case k_frame:
            InsertVoid(t);
            return false;
          case k_noframes:
            return InHead(t);
          default:
            return false;
        }
      case TokenType::kEndTag:
        if (t.tag == k_frameset) {
          if (stack_.size() == 1) return false;
          sink_.SetEndTag(Current()->node, t.end);
          Pop();
          if (context_ == nullptr && !CurrentIs(k_frameset)) mode_ = Mode::kAfterFrameset;
        }
        return false;
      default:
        return false;
    }
  }

  bool AfterFrameset(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        if (t.tag == k_noframes) return InHead(t);
        return false;
      case TokenType::kEndTag:
        if (t.tag == k_html) mode_ = Mode::kAfterAfterFrameset;
        return false;
      default:
        return false;
    }
  }

  bool AfterAfterBody(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t, nullptr);
        return false;
      case TokenType::kDoctype:
        return InBody(t);
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        break;
      case TokenType::kEndOfFile:
        return false;
      default:
        break;
    }
    mode_ = Mode::kInBody;
    return true;
  }

  bool AfterAfterFrameset(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t, nullptr);
        return false;
      case TokenType::kDoctype:
        return InBody(t);
      case TokenType::kStartTag:
        if (t.tag == k_html) return InBody(t);
        if (t.tag == k_noframes) return InHead(t);
        return false;
      default:
        return false;
    }
  }

  // -------------------------------------------------- foreign content

  bool ForeignContent(Token& t) {
    switch (t.type) {
      case TokenType::kComment:
        InsertComment(t);
        return false;
      case TokenType::kDoctype:
        return false;
      case TokenType::kStartTag: {
        if (BreaksOutOfForeignContent(t)) {
          PopToHtmlOrIntegrationPoint();
          return DispatchMode(t, mode_);
        }
        const Element* adjusted = AdjustedCurrent();
        InsertForeign(t, adjusted->ns);
        return false;
      }
      case TokenType::kEndTag: {
        if (t.tag == k_br || t.tag == k_p) {
          PopToHtmlOrIntegrationPoint();
          return DispatchMode(t, mode_);
        }
        for (size_t i = stack_.size(); i-- > 0;) {
          Element* node = stack_[i];
          if (i == 0) return false;
          if (EqualsIgnoreCase(node->name, t.data)) {
            sink_.SetEndTag(node->node, t.end);
            while (Current() != node) Pop();
            Pop();
            return false;
          }
          if (stack_[i - 1]->IsHtml()) return DispatchMode(t, mode_);
        }
        return false;
      }
      default:
        return false;
    }
  }

  void PopToHtmlOrIntegrationPoint() {
    while (!stack_.empty()) {
      const Element* e = Current();
      if (e->IsHtml() || IsMathmlTextIntegrationPoint(e) || e->html_integration_point) return;
      Pop();
    }
  }

  bool BreaksOutOfForeignContent(const Token& t) const {
    if (t.tag == k_font) {
      for (const SinkAttribute& a : attributes_) {
        if (a.name == "color" || a.name == "face" || a.name == "size") return true;
      }
      return false;
    }
    return IsForeignBreakout(t.tag);
  }

  // ------------------------------------------------------------ state

  Tokenizer tokenizer_;
  TreeSink& sink_;
  const bool scripting_;
  Mode mode_ = Mode::kInitial;
  Mode original_mode_ = Mode::kInitial;
  std::vector<Mode> template_modes_;
  std::vector<Element*> stack_;
  std::vector<Element*> formatting_;  // null: a marker
  std::array<uint32_t, static_cast<size_t>(TagId::kTagCount)> open_counts_;
  Element* head_ = nullptr;
  Element* form_ = nullptr;
  Element* context_ = nullptr;
  bool quirks_ = false;
  bool frameset_ok_ = true;
  bool foster_parenting_ = false;
  bool skip_newline_ = false;
  // In-table text waiting for the next token that is not characters.
  std::string pending_text_;
  bool pending_has_text_ = false;
  uint32_t pending_begin_ = 0;
  uint32_t pending_end_ = 0;
  std::vector<SinkAttribute> attributes_;  // the current start tag's
  std::vector<SinkAttribute> scratch_attributes_;
  std::string scratch_text_;
  std::deque<Element> records_;
  std::vector<Element*> free_;
};

}  // namespace

void TreeBuilder::Build(std::string_view utf8, TreeSink& sink, const TreeBuilderOptions& options) {
  Builder builder(utf8, sink, options);
  builder.Run();
}

}  // namespace OrvelParser
