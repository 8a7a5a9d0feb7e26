#include "html/tree_builder_tables.h"

#include <array>
#include <initializer_list>
#include <string_view>

namespace OrvelParser {
namespace {

using enum TagId;

class TagSet {
 public:
  constexpr TagSet(std::initializer_list<TagId> tags) : bits_() {
    for (TagId tag : tags) bits_[static_cast<size_t>(tag)] = true;
  }
  constexpr bool Has(TagId tag) const { return bits_[static_cast<size_t>(tag)]; }

 private:
  std::array<bool, static_cast<size_t>(kTagCount)> bits_;
};

constexpr TagSet kHeadings{k_h1, k_h2, k_h3, k_h4, k_h5, k_h6};
constexpr TagSet kDefaultScope{k_applet, k_caption, k_html,   k_table,    k_td,
                               k_th,     k_marquee, k_object, k_template, k_select};
constexpr TagSet kImpliedEndTags{k_dd, k_dt, k_li, k_optgroup, k_option, k_p, k_rb, k_rp, k_rt, k_rtc};
constexpr TagSet kTableParts{k_caption, k_colgroup, k_tbody, k_td, k_tfoot, k_th, k_thead, k_tr};
constexpr TagSet kSpecial{
    k_address, k_applet,  k_area,     k_article,  k_aside,    k_base,     k_basefont, k_bgsound,  k_blockquote,
    k_body,    k_br,      k_button,   k_caption,  k_center,   k_col,      k_colgroup, k_dd,       k_details,
    k_dir,     k_div,     k_dl,       k_dt,       k_embed,    k_fieldset, k_figcaption, k_figure, k_footer,
    k_form,    k_frame,   k_frameset, k_h1,       k_h2,       k_h3,       k_h4,       k_h5,       k_h6,
    k_head,    k_header,  k_hgroup,   k_hr,       k_html,     k_iframe,   k_img,      k_input,    k_keygen,
    k_li,      k_link,    k_listing,  k_main,     k_marquee,  k_menu,     k_meta,     k_nav,      k_noembed,
    k_noframes, k_noscript, k_object, k_ol,       k_p,        k_param,    k_plaintext, k_pre,     k_script,
    k_search,  k_section, k_select,   k_source,   k_style,    k_summary,  k_table,    k_tbody,    k_td,
    k_template, k_textarea, k_tfoot,  k_th,       k_thead,    k_title,    k_tr,       k_track,    k_ul,
    k_wbr,     k_xmp};
constexpr TagSet kBreakout{k_b,     k_big,   k_blockquote, k_body, k_br,     k_center, k_code,  k_dd,     k_div,
                           k_dl,    k_dt,    k_em,         k_embed, k_h1,    k_h2,     k_h3,    k_h4,     k_h5,
                           k_h6,    k_head,  k_hr,         k_i,    k_img,    k_li,     k_listing, k_menu, k_meta,
                           k_nobr,  k_ol,    k_p,          k_pre,  k_ruby,   k_s,      k_small, k_span,   k_strong,
                           k_strike, k_sub,  k_sup,        k_table, k_tt,    k_u,      k_ul,    k_var};
constexpr TagSet kVoidOrRawText{k_area,   k_base,  k_basefont, k_bgsound, k_br,      k_col,      k_embed,
                                k_frame,  k_hr,    k_image,    k_img,     k_input,   k_keygen,   k_link,
                                k_meta,   k_param, k_source,   k_track,   k_wbr,     k_script,   k_style,
                                k_title,  k_textarea, k_xmp,   k_iframe,  k_noembed, k_noframes, k_noscript,
                                k_plaintext};

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    char c = text[i];
    char p = prefix[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    if (p >= 'A' && p <= 'Z') p = static_cast<char>(p + 32);
    if (c != p) return false;
  }
  return true;
}
bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && StartsWithIgnoreCase(a, b);
}

constexpr std::string_view kQuirksPublicPrefixes[] = {
    "+//Silmaril//dtd html Pro v0r11 19970101//",
    "-//AS//DTD HTML 3.0 asWedit + extensions//",
    "-//AdvaSoft Ltd//DTD HTML 3.0 asWedit + extensions//",
    "-//IETF//DTD HTML 2.0 Level 1//",
    "-//IETF//DTD HTML 2.0 Level 2//",
    "-//IETF//DTD HTML 2.0 Strict Level 1//",
    "-//IETF//DTD HTML 2.0 Strict Level 2//",
    "-//IETF//DTD HTML 2.0 Strict//",
    "-//IETF//DTD HTML 2.0//",
    "-//IETF//DTD HTML 2.1E//",
    "-//IETF//DTD HTML 3.0//",
    "-//IETF//DTD HTML 3.2 Final//",
    "-//IETF//DTD HTML 3.2//",
    "-//IETF//DTD HTML 3//",
    "-//IETF//DTD HTML Level 0//",
    "-//IETF//DTD HTML Level 1//",
    "-//IETF//DTD HTML Level 2//",
    "-//IETF//DTD HTML Level 3//",
    "-//IETF//DTD HTML Strict Level 0//",
    "-//IETF//DTD HTML Strict Level 1//",
    "-//IETF//DTD HTML Strict Level 2//",
    "-//IETF//DTD HTML Strict Level 3//",
    "-//IETF//DTD HTML Strict//",
    "-//IETF//DTD HTML//",
    "-//Metrius//DTD Metrius Presentational//",
    "-//Microsoft//DTD Internet Explorer 2.0 HTML Strict//",
    "-//Microsoft//DTD Internet Explorer 2.0 HTML//",
    "-//Microsoft//DTD Internet Explorer 2.0 Tables//",
    "-//Microsoft//DTD Internet Explorer 3.0 HTML Strict//",
    "-//Microsoft//DTD Internet Explorer 3.0 HTML//",
    "-//Microsoft//DTD Internet Explorer 3.0 Tables//",
    "-//Netscape Comm. Corp.//DTD HTML//",
    "-//Netscape Comm. Corp.//DTD Strict HTML//",
    "-//O'Reilly and Associates//DTD HTML 2.0//",
    "-//O'Reilly and Associates//DTD HTML Extended 1.0//",
    "-//O'Reilly and Associates//DTD HTML Extended Relaxed 1.0//",
    "-//SQ//DTD HTML 2.0 HoTMetaL + extensions//",
    "-//SoftQuad Software//DTD HoTMetaL PRO 6.0::19990601::extensions to HTML 4.0//",
    "-//SoftQuad//DTD HoTMetaL PRO 4.0::19971010::extensions to HTML 4.0//",
    "-//Spyglass//DTD HTML 2.0 Extended//",
    "-//Sun Microsystems Corp.//DTD HotJava HTML//",
    "-//Sun Microsystems Corp.//DTD HotJava Strict HTML//",
    "-//W3C//DTD HTML 3 1995-03-24//",
    "-//W3C//DTD HTML 3.2 Draft//",
    "-//W3C//DTD HTML 3.2 Final//",
    "-//W3C//DTD HTML 3.2//",
    "-//W3C//DTD HTML 3.2S Draft//",
    "-//W3C//DTD HTML 4.0 Frameset//",
    "-//W3C//DTD HTML 4.0 Transitional//",
    "-//W3C//DTD HTML Experimental 19960712//",
    "-//W3C//DTD HTML Experimental 970421//",
    "-//W3C//DTD W3 HTML//",
    "-//W3O//DTD W3 HTML 3.0//",
    "-//WebTechs//DTD Mozilla HTML 2.0//",
    "-//WebTechs//DTD Mozilla HTML//",
};

}  // namespace

bool IsHeading(TagId tag) noexcept { return kHeadings.Has(tag); }
bool IsDefaultScopeBoundary(TagId tag) noexcept { return kDefaultScope.Has(tag); }
bool IsImpliedEndTag(TagId tag) noexcept { return kImpliedEndTags.Has(tag); }
bool IsTablePart(TagId tag) noexcept { return kTableParts.Has(tag); }
bool IsSpecialTag(TagId tag) noexcept { return kSpecial.Has(tag); }
bool IsForeignBreakout(TagId tag) noexcept { return kBreakout.Has(tag); }
bool IsVoidOrRawText(TagId tag) noexcept { return kVoidOrRawText.Has(tag); }

bool IsQuirksDoctype(const Token& doctype) noexcept {
  if (doctype.force_quirks || !doctype.has_name || doctype.data != "html") return true;
  const std::string_view public_id = doctype.has_public_id ? doctype.public_id : std::string_view();
  const std::string_view system_id = doctype.has_system_id ? doctype.system_id : std::string_view();
  if (doctype.has_public_id &&
      (EqualsIgnoreCase(public_id, "-//W3O//DTD W3 HTML Strict 3.0//EN//") ||
       EqualsIgnoreCase(public_id, "-/W3C/DTD HTML 4.0 Transitional/EN") || EqualsIgnoreCase(public_id, "HTML"))) {
    return true;
  }
  if (doctype.has_system_id &&
      EqualsIgnoreCase(system_id, "http://www.ibm.com/data/dtd/v11/ibmxhtml1-transitional.dtd")) {
    return true;
  }
  if (!doctype.has_public_id) return false;
  for (std::string_view prefix : kQuirksPublicPrefixes) {
    if (StartsWithIgnoreCase(public_id, prefix)) return true;
  }
  return !doctype.has_system_id && (StartsWithIgnoreCase(public_id, "-//W3C//DTD HTML 4.01 Frameset//") ||
                                    StartsWithIgnoreCase(public_id, "-//W3C//DTD HTML 4.01 Transitional//"));
}

}  // namespace OrvelParser
