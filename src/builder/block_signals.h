// What the blocks layout reads from an element's own markup: whether a
// reader sees it at all, and whether it looks like the boilerplate around a
// page's main text (navigation, menus, share bars, related links,
// advertising, cookie notices, comments).
//
// Class and id values are matched by words: a value is split at white space
// into tokens and each token at '-' and '_' into parts; a part or a whole
// token matches when it equals a listed word, ignoring ASCII case, or, for
// boilerplate words of five letters or more, when it begins with one (class
// names glue words: "relatedposts", "socialicons"). So "main-nav",
// "nav_links" and "NAV" name a nav, but "CtxtMenu" (MathJax's context-menu
// hook on formulas), "canvas" or "shadow" do not name a menu, a nav or an
// ad. Nothing is matched inside a part or at its end.
//
// Thread-safety: pure functions over constant data.
#ifndef ZESTRA_BUILDER_BLOCK_SIGNALS_H_
#define ZESTRA_BUILDER_BLOCK_SIGNALS_H_

#include <string_view>

#include "zestra/html/html_tree_node.h"

namespace ZestraNS {

// Which list of words a class or id value is matched against.
enum class ClassWords {
  // What surrounds the main text: nav, menu, sidebar, share, social,
  // related, ad, promo, cookie, newsletter, breadcrumb and their kin.
  kBoilerplate,
  // Comment sections: comment, comments, commentform, disqus, respond, ...
  kComments,
  // Class names that hide an element: hidden, sr-only, visually-hidden, ...
  // matched as whole tokens only ("hidden-xs" hides on small screens only).
  kHidden,
};

// The attribute a value comes from.
enum class NameAttribute {
  kClass,
  // Ids of five parts or more are slugs of headings
  // ("sharing-with-a-single-developer") rather than names of page parts:
  // only a whole id token is matched.
  kId,
};

// Whether `value` (a class or id attribute value) holds a word of `words`,
// as described above.
bool HasClassWord(std::string_view value, ClassWords words, NameAttribute from = NameAttribute::kClass);

// Whether a reader never sees the element: it has the `hidden` attribute,
// aria-hidden="true", an inline style with display:none or
// visibility:hidden, or a hiding class name (ClassWords::kHidden). Text
// nodes are never hidden.
bool IsHiddenElement(const OrvelParser::HtmlTreeNode& node);

// How an element's own markup marks it; a later value wins over an earlier
// one.
enum class ElementSignal {
  kNone,
  // nav, aside, header or footer; a navigation, banner, complementary,
  // contentinfo, menu, menubar or toolbar role; or a class or id word of
  // ClassWords::kBoilerplate.
  kBoilerplate,
  // A comment section by its class or id (ClassWords::kComments); checked
  // before kBoilerplate.
  kComments,
};

ElementSignal SignalOf(const OrvelParser::HtmlTreeNode& node);

// What an element's markup says of the short lines an article carries
// beside its text, as bits of LineSignal. Class and id values are matched
// as above (ids only by whole tokens of few parts):
//   kByline: an <address>, a <time>, a link with rel="author", or a class
//     or id word author, byline, dateline, date, pubdate, published,
//     timestamp, meta (the "entry-meta" line of blogs) and their kin;
//   kCredit: a class or id word credit, copyright, photographer,
//     attribution and their kin;
//   kCaption: a <figcaption>, or a class or id word caption, figcaption,
//     legend.
//   kForm: a <form> (its labels, options and notes).
enum LineSignal : uint8_t { kLineByline = 1, kLineCredit = 2, kLineCaption = 4, kLineForm = 8 };

// The element's ElementSignal (as SignalOf gives it) and its LineSignal
// bits, read in one pass over its attributes.
struct ElementSignals {
  ElementSignal signal = ElementSignal::kNone;
  uint8_t lines = 0;
};
ElementSignals SignalsOf(const OrvelParser::HtmlTreeNode& node);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_BLOCK_SIGNALS_H_
