#include "html/tokenizer.h"

#include <string>
#include <vector>

#include "html/char_ref.h"
#include "html/perfect_hash.h"
#include "html/text_scan.h"

namespace OrvelParser {
namespace {

// The tokenizer's states, as the standard names them. The character
// reference states live in DecodeCharRef.
enum class S : uint8_t {
  kData,
  kRcdata,
  kRawtext,
  kScriptData,
  kPlaintext,
  kTagOpen,
  kEndTagOpen,
  kTagName,
  // "<" in RCDATA, RAWTEXT, script data and escaped script data: which one
  // returns to text_state_.
  kTextLessThan,
  kTextEndTagOpen,
  kTextEndTagName,
  kScriptDataEscapeStart,
  kScriptDataEscapeStartDash,
  kScriptDataEscaped,
  kScriptDataEscapedDash,
  kScriptDataEscapedDashDash,
  kScriptDataDoubleEscapeStart,
  kScriptDataDoubleEscaped,
  kScriptDataDoubleEscapedDash,
  kScriptDataDoubleEscapedDashDash,
  kScriptDataDoubleEscapedLessThan,
  kScriptDataDoubleEscapeEnd,
  kBeforeAttributeName,
  kAttributeName,
  kAfterAttributeName,
  kBeforeAttributeValue,
  kAttributeValueDoubleQuoted,
  kAttributeValueSingleQuoted,
  kAttributeValueUnquoted,
  kAfterAttributeValueQuoted,
  kSelfClosingStartTag,
  kBogusComment,
  kMarkupDeclarationOpen,
  kCommentStart,
  kCommentStartDash,
  kComment,
  kCommentLessThan,
  kCommentLessThanBang,
  kCommentLessThanBangDash,
  kCommentLessThanBangDashDash,
  kCommentEndDash,
  kCommentEnd,
  kCommentEndBang,
  kDoctype,
  kBeforeDoctypeName,
  kDoctypeName,
  kAfterDoctypeName,
  kAfterDoctypePublicKeyword,
  kBeforeDoctypePublicId,
  kDoctypePublicIdDoubleQuoted,
  kDoctypePublicIdSingleQuoted,
  kAfterDoctypePublicId,
  kBetweenDoctypePublicAndSystemIds,
  kAfterDoctypeSystemKeyword,
  kBeforeDoctypeSystemId,
  kDoctypeSystemIdDoubleQuoted,
  kDoctypeSystemIdSingleQuoted,
  kAfterDoctypeSystemId,
  kBogusDoctype,
  kCdataSection,
  kCdataSectionBracket,
  kCdataSectionEnd,
  // The end of the input was reached: every further token is kEndOfFile.
  kEof,
};

constexpr int kEofChar = -1;
constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

// Byte classes of the tag and attribute name loops.
enum NameByte : uint8_t {
  kNameCopy = 0,   // part of the name as it is
  kNameUpper = 1,  // A-Z: part of the name, lowered
  kNameEquals = 2, // '=': ends an attribute name, part of a tag name
  kNameStop = 3,   // white space, '/', '>', NUL: the name state treats it apart
};
struct NameByteTable {
  NameByte classes[256];
  constexpr NameByteTable() : classes() {
    for (int c = 'A'; c <= 'Z'; ++c) classes[c] = kNameUpper;
    for (const unsigned char c : {'\t', '\n', '\f', '\r', ' ', '/', '>', '\0'}) classes[c] = kNameStop;
    classes[static_cast<unsigned char>('=')] = kNameEquals;
  }
};
constexpr NameByteTable kNameBytes;

constexpr bool IsSpace(int c) { return c == '\t' || c == '\n' || c == '\f' || c == ' ' || c == '\r'; }
constexpr bool IsAlpha(int c) { return ((c | 0x20) >= 'a' && (c | 0x20) <= 'z'); }
constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

// A piece of text that is a view of the input for as long as it can be
// (every byte appended is the next input byte) and a copy in a buffer from
// the first byte that is not.
struct Piece {
  bool buffered = false;
  uint32_t begin = 0;  // in the input, or in the owner's buffer
  uint32_t end = 0;
};

// Ascii case-insensitive comparison of input[pos...] with the lower-case
// `word`.
bool MatchesFolded(std::string_view input, uint32_t pos, std::string_view word) {
  if (input.size() - pos < word.size()) return false;
  for (size_t i = 0; i < word.size(); ++i)
    if (Lower(input[pos + i]) != word[i]) return false;
  return true;
}

}  // namespace

struct Tokenizer::State {
  explicit State(std::string_view text)
      : input(text), in(text.data()), size(static_cast<uint32_t>(text.size())), tag_hash(TagHashSalt()) {}

  bool Run(Token& out);

  // --- reading -----------------------------------------------------------
  // The next character with CR LF and lone CR read as LF, or kEofChar;
  // `last` keeps where it started so that Reconsume can step back.
  int Consume() {
    last = pos;
    if (pos >= size) return kEofChar;
    const char c = in[pos++];
    if (c == '\r') {
      if (pos < size && in[pos] == '\n') ++pos;
      return '\n';
    }
    return static_cast<unsigned char>(c);
  }
  void Reconsume() { pos = last; }

  // --- pieces ------------------------------------------------------------
  void Materialize(Piece& piece, std::string& buffer) {
    const auto at = static_cast<uint32_t>(buffer.size());
    buffer.append(in + piece.begin, piece.end - piece.begin);
    piece = {true, at, static_cast<uint32_t>(buffer.size())};
  }
  void AppendInput(Piece& piece, std::string& buffer, uint32_t from, uint32_t to) {
    if (!piece.buffered) {
      if (piece.begin == piece.end) {
        piece.begin = from;
        piece.end = to;
        return;
      }
      if (piece.end == from) {
        piece.end = to;
        return;
      }
      Materialize(piece, buffer);
    }
    buffer.append(in + from, to - from);
    piece.end = static_cast<uint32_t>(buffer.size());
  }
  void AppendBytes(Piece& piece, std::string& buffer, const char* bytes, size_t count) {
    if (!piece.buffered) Materialize(piece, buffer);
    buffer.append(bytes, count);
    piece.end = static_cast<uint32_t>(buffer.size());
  }
  // Appends `c`; while the piece is a view whose next input byte is `c`,
  // it stays a view.
  void AppendChar(Piece& piece, std::string& buffer, char c) {
    if (!piece.buffered && piece.begin != piece.end && piece.end < size && in[piece.end] == c) {
      ++piece.end;
      return;
    }
    AppendBytes(piece, buffer, &c, 1);
  }
  std::string_view View(const Piece& piece, const std::string& buffer) const {
    const char* base = piece.buffered ? buffer.data() : in;
    return {base + piece.begin, piece.end - piece.begin};
  }

  // --- character runs ------------------------------------------------------
  void StartRunAt(uint32_t from) {
    if (run_empty) {
      run_empty = false;
      run = {};
      run_buffer.clear();
      run_source_begin = from;
    }
  }
  void RunInput(uint32_t from, uint32_t to) {
    StartRunAt(from);
    AppendInput(run, run_buffer, from, to);
    run_source_end = to;
  }
  void RunBytes(uint32_t from, uint32_t to, const char* bytes, size_t count) {
    StartRunAt(from);
    AppendBytes(run, run_buffer, bytes, count);
    run_source_end = to;
  }
  // Emits the character at pos as text of a state other than data and
  // CDATA: CR LF and CR as LF, NUL as U+FFFD.
  void RunCurrent() {
    const uint32_t from = pos;
    const char c = in[pos];
    if (c == '\r') {
      Consume();
      RunBytes(from, pos, "\n", 1);
    } else if (c == '\0') {
      ++pos;
      RunBytes(from, pos, kReplacement, 3);
    } else {
      ++pos;
      RunInput(from, pos);
    }
  }
  // Emits text up to the first of `Stops` or the end of the input, which
  // pos is left at; CR and NUL on the way as RunCurrent does (NUL as itself
  // when `keep_nul`).
  template <char... Stops>
  void RunTextUntil(bool keep_nul = false) {
    for (;;) {
      const uint32_t stop = ScanUntil<'\r', '\0', Stops...>(in, pos, size);
      if (stop > pos) RunInput(pos, stop);
      pos = stop;
      if (stop >= size) return;
      const char c = in[stop];
      if (c != '\r' && c != '\0') return;
      if (c == '\0' && keep_nul) {
        ++pos;
        RunInput(stop, pos);
        continue;
      }
      RunCurrent();
    }
  }
  void FillRun(Token& out) {
    out = Token();
    out.type = TokenType::kCharacters;
    out.data = View(run, run_buffer);
    out.data_in_input = !run.buffered;
    out.begin = run_source_begin;
    out.end = run_source_end;
    run_empty = true;
  }
  bool EmitEof(Token& out) {
    state = S::kEof;
    if (run_empty) {
      out = Token();
      out.type = TokenType::kEndOfFile;
      out.begin = out.end = size;
    } else {
      FillRun(out);
    }
    return true;
  }
  void CharRefInText(uint32_t amp) {
    CharRef ref;
    if (DecodeCharRef(input, amp, false, ref)) {
      RunBytes(amp, ref.end, ref.utf8, ref.size);
      pos = ref.end;
    } else {
      pos = amp + 1;
      RunInput(amp, pos);
    }
  }

  // --- tags ----------------------------------------------------------------
  void StartTag(bool end_tag) {
    tag_is_end = end_tag;
    tag_name = {};
    tag_name_buffer.clear();
    tag_hash = TagHashSalt();
    self_closing = false;
    attributes.clear();
    attribute_names.clear();
    attribute_values.clear();
    attribute_open = false;
    dedup_active = false;
  }
  // Appends input[from, to) lowered to `piece`, a copy from then on.
  void AppendLowered(Piece& piece, std::string& buffer, uint32_t from, uint32_t to) {
    if (!piece.buffered) Materialize(piece, buffer);
    for (uint32_t i = from; i < to; ++i) buffer.push_back(Lower(in[i]));
    piece.end = static_cast<uint32_t>(buffer.size());
  }
  // Reads name bytes from pos up to the first byte of class kNameStop (and
  // kNameEquals for attribute names), lowered, into `name`. Returns `hash`
  // stepped over the lowered bytes.
  template <bool kStopAtEquals>
  uint32_t ReadName(Piece& name, std::string& buffer, uint32_t hash) {
    const uint32_t start = pos;
    bool upper = false;
    while (pos < size) {
      const auto c = static_cast<unsigned char>(in[pos]);
      const NameByte kind = kNameBytes.classes[c];
      if (kind == kNameStop || (kStopAtEquals && kind == kNameEquals)) break;
      upper |= kind == kNameUpper;
      hash = NameHashStep(hash, static_cast<unsigned char>(c | (kind == kNameUpper ? 0x20 : 0)));
      ++pos;
    }
    if (pos == start) return hash;
    if (upper) {
      AppendLowered(name, buffer, start, pos);
    } else {
      AppendInput(name, buffer, start, pos);
    }
    return hash;
  }
  static uint32_t HashReplacement(uint32_t hash) {
    for (const char byte : std::string_view(kReplacement, 3)) hash = NameHashStep(hash, static_cast<unsigned char>(byte));
    return hash;
  }
  void AppendReplacementToTagName() {
    AppendBytes(tag_name, tag_name_buffer, kReplacement, 3);
    tag_hash = HashReplacement(tag_hash);
  }
  std::string_view TagNameView() const { return View(tag_name, tag_name_buffer); }
  bool AppropriateEndTag() const { return !last_start_tag.empty() && TagNameView() == last_start_tag; }

  struct AttributeRecord {
    Piece name;     // in the input or attribute_names
    uint32_t hash;  // of the name, from AttributeHashSalt
    AttributeId id;
    Piece value;  // in the input or attribute_values
  };

  void StartAttribute() {
    FinishAttribute();
    attribute_open = true;
    attribute_dropped = false;
    current.name = {};
    current.hash = AttributeHashSalt();
    current.id = AttributeId::kAttributeUnknown;
    current.value = {};
  }
  // Leaving the attribute name state: a name the tag already has drops the
  // new attribute (its value is still read, then discarded).
  void EndAttributeName() {
    if (tag_is_end) return;  // an end tag's attributes are dropped anyway
    current.id = LookupAttributeHashed(AttributeName(current), current.hash);
    if (IsDuplicate()) {
      attribute_dropped = true;
      if (current.name.buffered) attribute_names.resize(current.name.begin);
    }
  }
  void FinishAttribute() {
    if (!attribute_open) return;
    attribute_open = false;
    if (attribute_dropped || tag_is_end) {
      if (current.value.buffered) attribute_values.resize(current.value.begin);
      return;
    }
    attributes.push_back(current);
    if (dedup_active) InsertDedup(static_cast<uint32_t>(attributes.size() - 1));
  }

  bool SameName(const Piece& a, const Piece& b) const {
    const std::string_view x = View(a, attribute_names), y = View(b, attribute_names);
    return SameShortText(x.data(), static_cast<uint32_t>(x.size()), y.data(), static_cast<uint32_t>(y.size()));
  }
  std::string_view AttributeName(const AttributeRecord& record) const {
    return View(record.name, attribute_names);
  }

  // Duplicate names: a linear scan while the tag has few attributes, an
  // open-addressing set of attribute indexes beyond, so that each check is
  // amortised constant time however many attributes one tag has.
  static constexpr size_t kLinearDedupLimit = 8;
  bool IsDuplicate() {
    if (!dedup_active) {
      for (const AttributeRecord& record : attributes)
        if (SameName(record.name, current.name)) return true;
      if (attributes.size() >= kLinearDedupLimit) {
        // Sized for this tag (a table grown by an earlier tag is shrunk, so
        // that clearing costs what this tag has).
        dedup_slots.assign(64, 0);
        dedup_active = true;
        for (uint32_t i = 0; i < attributes.size(); ++i) InsertDedup(i);
      }
      return false;
    }
    const size_t mask = dedup_slots.size() - 1;
    for (size_t slot = DedupSlot(current.hash, mask);; slot = (slot + 1) & mask) {
      const uint32_t entry = dedup_slots[slot];
      if (entry == 0) return false;
      const AttributeRecord& record = attributes[entry - 1];
      if (record.hash == current.hash && SameName(record.name, current.name)) return true;
    }
  }
  static size_t DedupSlot(uint32_t hash, size_t mask) { return (hash ^ (hash >> 15)) & mask; }
  void InsertDedup(uint32_t index) {
    if ((attributes.size() + 1) * 2 > dedup_slots.size()) {
      dedup_slots.assign(dedup_slots.size() * 2, 0);
      for (uint32_t i = 0; i < attributes.size(); ++i)
        if (i != index) PlaceDedup(i);
    }
    PlaceDedup(index);
  }
  void PlaceDedup(uint32_t index) {
    const size_t mask = dedup_slots.size() - 1;
    size_t slot = DedupSlot(attributes[index].hash, mask);
    while (dedup_slots[slot] != 0) slot = (slot + 1) & mask;
    dedup_slots[slot] = index + 1;
  }

  // The token to fill for a token other than characters: `out`, or the
  // pending slot when a character run goes out first.
  Token& Target(Token& out) {
    if (run_empty) return out;
    has_pending = true;
    FillRun(out);
    return pending;
  }
  bool EmitTag(Token& out) {
    FinishAttribute();
    state = S::kData;
    Token& token = Target(out);
    token.type = tag_is_end ? TokenType::kEndTag : TokenType::kStartTag;
    token.data = TagNameView();
    token.data_in_input = !tag_name.buffered;
    token.tag = LookupTagHashed(token.data, tag_hash);
    token.self_closing = self_closing;
    token.has_name = token.has_public_id = token.has_system_id = token.force_quirks = false;
    token.public_id = token.system_id = {};
    token.begin = token_begin;
    token.end = pos;
    if (tag_is_end) {
      token.attributes = {};
    } else {
      out_attributes.clear();
      for (const AttributeRecord& record : attributes)
        out_attributes.push_back({AttributeName(record), View(record.value, attribute_values), record.id,
                                  !record.name.buffered, !record.value.buffered});
      token.attributes = out_attributes;
      last_start_tag.assign(token.data);
    }
    return true;
  }
  void CharRefInAttribute(uint32_t amp) {
    CharRef ref;
    if (DecodeCharRef(input, amp, true, ref)) {
      AppendBytes(current.value, attribute_values, ref.utf8, ref.size);
      pos = ref.end;
    } else {
      pos = amp + 1;
      AppendInput(current.value, attribute_values, amp, pos);
    }
  }
  // A quoted attribute value up to its closing `Quote`.
  template <char Quote>
  void QuotedValue() {
    for (;;) {
      const uint32_t stop = ScanUntil<Quote, '&', '\r', '\0'>(in, pos, size);
      if (stop > pos) AppendInput(current.value, attribute_values, pos, stop);
      pos = stop;
      if (stop >= size) return;
      switch (in[stop]) {
        case Quote:
          ++pos;
          state = S::kAfterAttributeValueQuoted;
          return;
        case '&':
          CharRefInAttribute(stop);
          break;
        case '\r':
          Consume();
          AppendBytes(current.value, attribute_values, "\n", 1);
          break;
        default:  // NUL
          ++pos;
          AppendBytes(current.value, attribute_values, kReplacement, 3);
          break;
      }
    }
  }

  // --- comments ------------------------------------------------------------
  void StartComment() {
    comment = {};
    comment_buffer.clear();
  }
  void CommentChar(char c) { AppendChar(comment, comment_buffer, c); }
  bool EmitComment(Token& out) {
    state = S::kData;
    Token& token = Target(out);
    token = Token();
    token.type = TokenType::kComment;
    token.data = View(comment, comment_buffer);
    token.data_in_input = !comment.buffered;
    token.begin = token_begin;
    token.end = pos;
    return true;
  }
  // Hands out the comment that the input ends in; the end of file follows.
  bool EndInComment(Token& out) {
    EmitComment(out);
    state = S::kEof;
    return true;
  }
  // Comment text up to the first of `Stops`, with CR and NUL rewritten.
  template <char... Stops>
  void CommentTextUntil() {
    for (;;) {
      const uint32_t stop = ScanUntil<'\r', '\0', Stops...>(in, pos, size);
      if (stop > pos) AppendInput(comment, comment_buffer, pos, stop);
      pos = stop;
      if (stop >= size) return;
      if (in[stop] == '\r') {
        Consume();
        AppendBytes(comment, comment_buffer, "\n", 1);
      } else if (in[stop] == '\0') {
        ++pos;
        AppendBytes(comment, comment_buffer, kReplacement, 3);
      } else {
        return;
      }
    }
  }

  // Hands out the doctype that the input ends in; the end of file follows.
  bool EndInDoctype(Token& out, bool quirks) {
    EmitDoctype(out, quirks);
    state = S::kEof;
    return true;
  }

  // --- doctype -------------------------------------------------------------
  void StartDoctype() {
    doctype_name.clear();
    public_id.clear();
    system_id.clear();
    has_name = has_public_id = has_system_id = force_quirks = false;
  }
  // Appends the character `c` (as Consume read it) to a doctype string.
  static void AppendDoctypeChar(std::string& text, int c, bool lower) {
    if (c == 0) {
      text.append(kReplacement, 3);
    } else {
      const char byte = static_cast<char>(c);
      text.push_back(lower ? Lower(byte) : byte);
    }
  }
  bool EmitDoctype(Token& out, bool quirks) {
    if (quirks) force_quirks = true;
    state = S::kData;
    Token& token = Target(out);
    token = Token();
    token.type = TokenType::kDoctype;
    token.data = doctype_name;
    token.has_name = has_name;
    token.has_public_id = has_public_id;
    token.has_system_id = has_system_id;
    token.public_id = public_id;
    token.system_id = system_id;
    token.force_quirks = force_quirks;
    token.begin = token_begin;
    token.end = pos;
    return true;
  }
  const std::string_view input;
  const char* const in;
  const uint32_t size;
  uint32_t pos = 0;
  uint32_t last = 0;  // where the last Consume started
  S state = S::kData;
  // The text state that "<" in RCDATA, RAWTEXT, script data or escaped
  // script data returns to.
  S text_state = S::kData;
  bool cdata_allowed = false;
  std::string last_start_tag;

  // The character run being gathered.
  bool run_empty = true;
  Piece run;
  std::string run_buffer;
  uint32_t run_source_begin = 0;
  uint32_t run_source_end = 0;
  uint32_t less_than = 0;  // offset of the '<' that opened the current tag or text "<"

  // A token that waits behind a character run.
  Token pending;
  bool has_pending = false;

  // The tag being gathered.
  uint32_t token_begin = 0;
  bool tag_is_end = false;
  Piece tag_name;  // lower case, in the input or tag_name_buffer
  std::string tag_name_buffer;
  uint32_t tag_hash;
  bool self_closing = false;
  std::vector<AttributeRecord> attributes;
  std::string attribute_names;
  std::string attribute_values;
  AttributeRecord current{};
  bool attribute_open = false;
  bool attribute_dropped = false;
  bool dedup_active = false;
  std::vector<uint32_t> dedup_slots;  // attribute index + 1; 0 is empty
  std::vector<TokenAttribute> out_attributes;

  // "script" or not, in the double-escape states.
  std::string temporary;

  Piece comment;
  std::string comment_buffer;

  std::string doctype_name, public_id, system_id;
  bool has_name = false, has_public_id = false, has_system_id = false, force_quirks = false;
};

bool Tokenizer::State::Run(Token& out) {
  for (;;) {
    switch (state) {
      case S::kData: {
        const uint32_t stop = ScanUntil<'<', '&', '\r'>(in, pos, size);
        if (stop > pos) RunInput(pos, stop);
        pos = stop;
        if (stop >= size) return EmitEof(out);
        if (in[stop] == '&') {
          CharRefInText(stop);
        } else if (in[stop] == '\r') {
          RunCurrent();
        } else {
          // Hand the text out first: the tree builder may have to say
          // whether "<![CDATA[" opens a section before the tag is read.
          if (!run_empty) {
            FillRun(out);
            return true;
          }
          token_begin = less_than = pos++;
          state = S::kTagOpen;
        }
        break;
      }
      case S::kRcdata: {
        RunTextUntil<'<', '&'>();
        if (pos >= size) return EmitEof(out);
        if (in[pos] == '&') {
          CharRefInText(pos);
        } else {
          less_than = pos++;
          text_state = S::kRcdata;
          state = S::kTextLessThan;
        }
        break;
      }
      case S::kRawtext:
      case S::kScriptData: {
        RunTextUntil<'<'>();
        if (pos >= size) return EmitEof(out);
        less_than = pos++;
        text_state = state;
        state = S::kTextLessThan;
        break;
      }
      case S::kPlaintext:
        RunTextUntil<>();
        return EmitEof(out);

      case S::kTagOpen: {
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (c == '!') {
          ++pos;
          state = S::kMarkupDeclarationOpen;
        } else if (c == '/') {
          ++pos;
          state = S::kEndTagOpen;
        } else if (IsAlpha(c)) {
          StartTag(false);
          state = S::kTagName;
        } else if (c == '?') {
          StartComment();
          state = S::kBogusComment;
        } else {
          RunInput(less_than, less_than + 1);
          state = S::kData;
        }
        break;
      }
      case S::kEndTagOpen: {
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (IsAlpha(c)) {
          StartTag(true);
          state = S::kTagName;
        } else if (c == '>') {
          ++pos;
          state = S::kData;
        } else if (c == kEofChar) {
          RunInput(less_than, less_than + 2);
          state = S::kData;
        } else {
          StartComment();
          state = S::kBogusComment;
        }
        break;
      }
      case S::kTagName: {
        for (;;) {
          tag_hash = ReadName<false>(tag_name, tag_name_buffer, tag_hash);
          if (pos >= size) return EmitEof(out);
          const char c = in[pos++];
          if (c == '>') return EmitTag(out);
          if (c == '/') {
            state = S::kSelfClosingStartTag;
            break;
          }
          if (c != '\0') {
            state = S::kBeforeAttributeName;
            break;
          }
          AppendReplacementToTagName();
        }
        break;
      }

      case S::kTextLessThan: {
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (c == '/') {
          ++pos;
          state = S::kTextEndTagOpen;
        } else if (c == '!' && text_state == S::kScriptData) {
          ++pos;
          RunInput(less_than, pos);
          state = S::kScriptDataEscapeStart;
        } else if (IsAlpha(c) && text_state == S::kScriptDataEscaped) {
          temporary.clear();
          RunInput(less_than, pos);
          state = S::kScriptDataDoubleEscapeStart;
        } else {
          RunInput(less_than, pos);
          state = text_state;
        }
        break;
      }
      case S::kTextEndTagOpen: {
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (IsAlpha(c)) {
          token_begin = less_than;
          StartTag(true);
          state = S::kTextEndTagName;
        } else {
          RunInput(less_than, pos);
          state = text_state;
        }
        break;
      }
      case S::kTextEndTagName: {
        for (;;) {
          const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
          if (IsAlpha(c)) {
            const char lower = Lower(static_cast<char>(c));
            AppendBytes(tag_name, tag_name_buffer, &lower, 1);
            tag_hash = NameHashStep(tag_hash, static_cast<unsigned char>(lower));
            ++pos;
            continue;
          }
          if ((IsSpace(c) || c == '/' || c == '>') && AppropriateEndTag()) {
            ++pos;
            if (c == '>') return EmitTag(out);
            state = c == '/' ? S::kSelfClosingStartTag : S::kBeforeAttributeName;
            break;
          }
          RunInput(less_than, pos);
          state = text_state;
          break;
        }
        break;
      }

      case S::kScriptDataEscapeStart:
      case S::kScriptDataEscapeStartDash: {
        if (pos < size && in[pos] == '-') {
          RunCurrent();
          state = state == S::kScriptDataEscapeStart ? S::kScriptDataEscapeStartDash : S::kScriptDataEscapedDashDash;
        } else {
          state = S::kScriptData;
        }
        break;
      }
      case S::kScriptDataEscaped:
      case S::kScriptDataDoubleEscaped: {
        const bool doubled = state == S::kScriptDataDoubleEscaped;
        RunTextUntil<'-', '<'>();
        if (pos >= size) return EmitEof(out);
        if (in[pos] == '-') {
          RunCurrent();
          state = doubled ? S::kScriptDataDoubleEscapedDash : S::kScriptDataEscapedDash;
        } else if (doubled) {
          RunCurrent();
          state = S::kScriptDataDoubleEscapedLessThan;
        } else {
          less_than = pos++;
          text_state = S::kScriptDataEscaped;
          state = S::kTextLessThan;
        }
        break;
      }
      case S::kScriptDataEscapedDash:
      case S::kScriptDataEscapedDashDash:
      case S::kScriptDataDoubleEscapedDash:
      case S::kScriptDataDoubleEscapedDashDash: {
        const bool doubled = state == S::kScriptDataDoubleEscapedDash || state == S::kScriptDataDoubleEscapedDashDash;
        const bool dash_dash = state == S::kScriptDataEscapedDashDash || state == S::kScriptDataDoubleEscapedDashDash;
        if (pos >= size) return EmitEof(out);
        const char c = in[pos];
        if (c == '-') {
          RunCurrent();
          state = doubled ? S::kScriptDataDoubleEscapedDashDash : S::kScriptDataEscapedDashDash;
        } else if (c == '<') {
          if (doubled) {
            RunCurrent();
            state = S::kScriptDataDoubleEscapedLessThan;
          } else {
            less_than = pos++;
            text_state = S::kScriptDataEscaped;
            state = S::kTextLessThan;
          }
        } else if (c == '>' && dash_dash) {
          RunCurrent();
          state = S::kScriptData;
        } else {
          RunCurrent();
          state = doubled ? S::kScriptDataDoubleEscaped : S::kScriptDataEscaped;
        }
        break;
      }
      case S::kScriptDataDoubleEscapeStart:
      case S::kScriptDataDoubleEscapeEnd: {
        const bool start = state == S::kScriptDataDoubleEscapeStart;
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (IsSpace(c) || c == '/' || c == '>') {
          const bool script = temporary == "script";
          RunCurrent();
          if (start) {
            state = script ? S::kScriptDataDoubleEscaped : S::kScriptDataEscaped;
          } else {
            state = script ? S::kScriptDataEscaped : S::kScriptDataDoubleEscaped;
          }
        } else if (IsAlpha(c)) {
          temporary.push_back(Lower(static_cast<char>(c)));
          RunCurrent();
        } else {
          state = start ? S::kScriptDataEscaped : S::kScriptDataDoubleEscaped;
        }
        break;
      }
      case S::kScriptDataDoubleEscapedLessThan: {
        if (pos < size && in[pos] == '/') {
          temporary.clear();
          RunCurrent();
          state = S::kScriptDataDoubleEscapeEnd;
        } else {
          state = S::kScriptDataDoubleEscaped;
        }
        break;
      }

      case S::kBeforeAttributeName: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '/' || c == '>' || c == kEofChar) {
          Reconsume();
          state = S::kAfterAttributeName;
        } else {
          StartAttribute();
          if (c == '=') {
            AppendInput(current.name, attribute_names, last, pos);
            current.hash = NameHashStep(current.hash, '=');
          } else {
            Reconsume();
          }
          state = S::kAttributeName;
        }
        break;
      }
      case S::kAttributeName: {
        for (;;) {
          current.hash = ReadName<true>(current.name, attribute_names, current.hash);
          if (pos < size && in[pos] == '\0') {
            ++pos;
            AppendBytes(current.name, attribute_names, kReplacement, 3);
            current.hash = HashReplacement(current.hash);
            continue;
          }
          EndAttributeName();
          if (pos < size && in[pos] == '=') {
            ++pos;
            state = S::kBeforeAttributeValue;
          } else {
            state = S::kAfterAttributeName;
          }
          break;
        }
        break;
      }
      case S::kAfterAttributeName: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '/') {
          state = S::kSelfClosingStartTag;
        } else if (c == '=') {
          state = S::kBeforeAttributeValue;
        } else if (c == '>') {
          return EmitTag(out);
        } else if (c == kEofChar) {
          return EmitEof(out);
        } else {
          Reconsume();
          StartAttribute();
          state = S::kAttributeName;
        }
        break;
      }
      case S::kBeforeAttributeValue: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '"') {
          state = S::kAttributeValueDoubleQuoted;
        } else if (c == '\'') {
          state = S::kAttributeValueSingleQuoted;
        } else if (c == '>') {
          return EmitTag(out);
        } else {
          Reconsume();
          state = S::kAttributeValueUnquoted;
        }
        break;
      }
      case S::kAttributeValueDoubleQuoted:
        QuotedValue<'"'>();
        if (pos >= size) return EmitEof(out);
        break;
      case S::kAttributeValueSingleQuoted:
        QuotedValue<'\''>();
        if (pos >= size) return EmitEof(out);
        break;
      case S::kAttributeValueUnquoted: {
        for (;;) {
          if (pos >= size) return EmitEof(out);
          const char c = in[pos];
          if (IsSpace(c)) {
            Consume();
            state = S::kBeforeAttributeName;
            break;
          }
          if (c == '>') {
            ++pos;
            return EmitTag(out);
          }
          if (c == '&') {
            CharRefInAttribute(pos);
          } else if (c == '\0') {
            ++pos;
            AppendBytes(current.value, attribute_values, kReplacement, 3);
          } else {
            AppendInput(current.value, attribute_values, pos, pos + 1);
            ++pos;
          }
        }
        break;
      }
      case S::kAfterAttributeValueQuoted: {
        const int c = Consume();
        if (IsSpace(c)) {
          state = S::kBeforeAttributeName;
        } else if (c == '/') {
          state = S::kSelfClosingStartTag;
        } else if (c == '>') {
          return EmitTag(out);
        } else if (c == kEofChar) {
          return EmitEof(out);
        } else {
          Reconsume();
          state = S::kBeforeAttributeName;
        }
        break;
      }
      case S::kSelfClosingStartTag: {
        const int c = Consume();
        if (c == '>') {
          self_closing = true;
          return EmitTag(out);
        }
        if (c == kEofChar) return EmitEof(out);
        Reconsume();
        state = S::kBeforeAttributeName;
        break;
      }

      case S::kBogusComment: {
        CommentTextUntil<'>'>();
        if (pos >= size) return EndInComment(out);
        ++pos;
        return EmitComment(out);
      }
      case S::kMarkupDeclarationOpen: {
        if (size - pos >= 2 && in[pos] == '-' && in[pos + 1] == '-') {
          pos += 2;
          StartComment();
          state = S::kCommentStart;
        } else if (MatchesFolded(input, pos, "doctype")) {
          pos += 7;
          state = S::kDoctype;
        } else if (cdata_allowed && input.substr(pos).starts_with("[CDATA[")) {
          pos += 7;
          state = S::kCdataSection;
        } else {
          StartComment();
          state = S::kBogusComment;
        }
        break;
      }
      case S::kCommentStart:
      case S::kCommentStartDash: {
        const bool dash = state == S::kCommentStartDash;
        const int c = Consume();
        if (c == '-') {
          state = dash ? S::kCommentEnd : S::kCommentStartDash;
        } else if (c == '>') {
          return EmitComment(out);
        } else if (c == kEofChar && dash) {
          return EndInComment(out);
        } else {
          Reconsume();
          if (dash) CommentChar('-');
          state = S::kComment;
        }
        break;
      }
      case S::kComment: {
        CommentTextUntil<'<', '-'>();
        if (pos >= size) return EndInComment(out);
        if (in[pos] == '<') {
          CommentChar('<');
          state = S::kCommentLessThan;
        } else {
          state = S::kCommentEndDash;
        }
        ++pos;
        break;
      }
      case S::kCommentLessThan: {
        const int c = pos < size ? static_cast<unsigned char>(in[pos]) : kEofChar;
        if (c == '!') {
          CommentChar('!');
          ++pos;
          state = S::kCommentLessThanBang;
        } else if (c == '<') {
          CommentChar('<');
          ++pos;
        } else {
          state = S::kComment;
        }
        break;
      }
      case S::kCommentLessThanBang:
      case S::kCommentLessThanBangDash: {
        const bool dash = state == S::kCommentLessThanBangDash;
        if (pos < size && in[pos] == '-') {
          ++pos;
          state = dash ? S::kCommentLessThanBangDashDash : S::kCommentLessThanBangDash;
        } else {
          state = dash ? S::kCommentEndDash : S::kComment;
        }
        break;
      }
      case S::kCommentLessThanBangDashDash:
        state = S::kCommentEnd;
        break;
      case S::kCommentEndDash: {
        const int c = Consume();
        if (c == '-') {
          state = S::kCommentEnd;
        } else if (c == kEofChar) {
          return EndInComment(out);
        } else {
          Reconsume();
          CommentChar('-');
          state = S::kComment;
        }
        break;
      }
      case S::kCommentEnd: {
        const int c = Consume();
        if (c == '>') return EmitComment(out);
        if (c == '!') {
          state = S::kCommentEndBang;
        } else if (c == '-') {
          CommentChar('-');
        } else if (c == kEofChar) {
          return EndInComment(out);
        } else {
          Reconsume();
          CommentChar('-');
          CommentChar('-');
          state = S::kComment;
        }
        break;
      }
      case S::kCommentEndBang: {
        const int c = Consume();
        if (c == '>') return EmitComment(out);
        if (c == kEofChar) return EndInComment(out);
        CommentChar('-');
        CommentChar('-');
        CommentChar('!');
        if (c == '-') {
          state = S::kCommentEndDash;
        } else {
          Reconsume();
          state = S::kComment;
        }
        break;
      }

      case S::kDoctype: {
        StartDoctype();
        const int c = Consume();
        if (c == kEofChar) return EndInDoctype(out, true);
        if (!IsSpace(c)) Reconsume();
        state = S::kBeforeDoctypeName;
        break;
      }
      case S::kBeforeDoctypeName: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '>') return EmitDoctype(out, true);
        if (c == kEofChar) return EndInDoctype(out, true);
        has_name = true;
        AppendDoctypeChar(doctype_name, c, true);
        state = S::kDoctypeName;
        break;
      }
      case S::kDoctypeName: {
        for (;;) {
          const int c = Consume();
          if (IsSpace(c)) {
            state = S::kAfterDoctypeName;
            break;
          }
          if (c == '>') return EmitDoctype(out, false);
          if (c == kEofChar) return EndInDoctype(out, true);
          AppendDoctypeChar(doctype_name, c, true);
        }
        break;
      }
      case S::kAfterDoctypeName: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '>') return EmitDoctype(out, false);
        if (c == kEofChar) return EndInDoctype(out, true);
        Reconsume();
        if (MatchesFolded(input, pos, "public")) {
          pos += 6;
          state = S::kAfterDoctypePublicKeyword;
        } else if (MatchesFolded(input, pos, "system")) {
          pos += 6;
          state = S::kAfterDoctypeSystemKeyword;
        } else {
          force_quirks = true;
          state = S::kBogusDoctype;
        }
        break;
      }
      case S::kAfterDoctypePublicKeyword:
      case S::kBeforeDoctypePublicId:
      case S::kAfterDoctypeSystemKeyword:
      case S::kBeforeDoctypeSystemId: {
        const bool is_public = state == S::kAfterDoctypePublicKeyword || state == S::kBeforeDoctypePublicId;
        const bool keyword = state == S::kAfterDoctypePublicKeyword || state == S::kAfterDoctypeSystemKeyword;
        int c = Consume();
        if (keyword && IsSpace(c)) {
          state = is_public ? S::kBeforeDoctypePublicId : S::kBeforeDoctypeSystemId;
          break;
        }
        while (IsSpace(c)) c = Consume();
        if (c == '"' || c == '\'') {
          if (is_public) {
            has_public_id = true;
            state = c == '"' ? S::kDoctypePublicIdDoubleQuoted : S::kDoctypePublicIdSingleQuoted;
          } else {
            has_system_id = true;
            state = c == '"' ? S::kDoctypeSystemIdDoubleQuoted : S::kDoctypeSystemIdSingleQuoted;
          }
        } else if (c == '>') {
          return EmitDoctype(out, true);
        } else if (c == kEofChar) {
          return EndInDoctype(out, true);
        } else {
          Reconsume();
          force_quirks = true;
          state = S::kBogusDoctype;
        }
        break;
      }
      case S::kDoctypePublicIdDoubleQuoted:
      case S::kDoctypePublicIdSingleQuoted:
      case S::kDoctypeSystemIdDoubleQuoted:
      case S::kDoctypeSystemIdSingleQuoted: {
        const bool is_public = state == S::kDoctypePublicIdDoubleQuoted || state == S::kDoctypePublicIdSingleQuoted;
        const int quote =
            state == S::kDoctypePublicIdDoubleQuoted || state == S::kDoctypeSystemIdDoubleQuoted ? '"' : '\'';
        std::string& text = is_public ? public_id : system_id;
        for (;;) {
          const int c = Consume();
          if (c == quote) {
            state = is_public ? S::kAfterDoctypePublicId : S::kAfterDoctypeSystemId;
            break;
          }
          if (c == '>') return EmitDoctype(out, true);
          if (c == kEofChar) return EndInDoctype(out, true);
          AppendDoctypeChar(text, c, false);
        }
        break;
      }
      case S::kAfterDoctypePublicId:
      case S::kBetweenDoctypePublicAndSystemIds: {
        int c = Consume();
        if (state == S::kAfterDoctypePublicId && IsSpace(c)) {
          state = S::kBetweenDoctypePublicAndSystemIds;
          break;
        }
        while (IsSpace(c)) c = Consume();
        if (c == '>') return EmitDoctype(out, false);
        if (c == '"' || c == '\'') {
          has_system_id = true;
          state = c == '"' ? S::kDoctypeSystemIdDoubleQuoted : S::kDoctypeSystemIdSingleQuoted;
        } else if (c == kEofChar) {
          return EndInDoctype(out, true);
        } else {
          Reconsume();
          force_quirks = true;
          state = S::kBogusDoctype;
        }
        break;
      }
      case S::kAfterDoctypeSystemId: {
        int c;
        do c = Consume();
        while (IsSpace(c));
        if (c == '>') return EmitDoctype(out, false);
        if (c == kEofChar) return EndInDoctype(out, true);
        Reconsume();
        state = S::kBogusDoctype;
        break;
      }
      case S::kBogusDoctype: {
        const uint32_t stop = ScanUntil<'>'>(in, pos, size);
        if (stop >= size) {
          pos = size;
          return EndInDoctype(out, false);
        }
        pos = stop + 1;
        return EmitDoctype(out, false);
      }

      case S::kCdataSection: {
        RunTextUntil<']'>(/*keep_nul=*/true);
        if (pos >= size) return EmitEof(out);
        ++pos;
        state = S::kCdataSectionBracket;
        break;
      }
      case S::kCdataSectionBracket: {
        if (pos < size && in[pos] == ']') {
          ++pos;
          state = S::kCdataSectionEnd;
        } else {
          RunInput(pos - 1, pos);
          state = S::kCdataSection;
        }
        break;
      }
      case S::kCdataSectionEnd: {
        if (pos < size && in[pos] == ']') {
          RunInput(pos - 2, pos - 1);
          ++pos;
        } else if (pos < size && in[pos] == '>') {
          ++pos;
          state = S::kData;
        } else {
          RunInput(pos - 2, pos);
          state = S::kCdataSection;
        }
        break;
      }

      case S::kEof:
        return EmitEof(out);
    }
  }
}

Tokenizer::Tokenizer(std::string_view input) : state_(std::make_unique<State>(input)) {}

Tokenizer::~Tokenizer() = default;

void Tokenizer::Next(Token& token) {
  State& s = *state_;
  if (s.has_pending) {
    s.has_pending = false;
    token = s.pending;
    return;
  }
  s.Run(token);
}

void Tokenizer::SetState(TokenizerState state) {
  State& s = *state_;
  if (s.state == S::kEof) return;
  switch (state) {
    case TokenizerState::kData:
      s.state = S::kData;
      break;
    case TokenizerState::kRcdata:
      s.state = S::kRcdata;
      break;
    case TokenizerState::kRawtext:
      s.state = S::kRawtext;
      break;
    case TokenizerState::kScriptData:
      s.state = S::kScriptData;
      break;
    case TokenizerState::kPlaintext:
      s.state = S::kPlaintext;
      break;
    case TokenizerState::kCdataSection:
      s.state = S::kCdataSection;
      break;
  }
}

void Tokenizer::SetLastStartTag(std::string_view name) { state_->last_start_tag.assign(name); }

void Tokenizer::SetCdataAllowed(bool allowed) { state_->cdata_allowed = allowed; }

}  // namespace OrvelParser
