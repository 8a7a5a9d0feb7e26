// Helpers shared by the ranking and traversal tests: building layout trees
// by hand, a small deterministic pseudo-random generator, random trees, and
// the plain (unoptimised, literal) definitions of a table's rank and of the
// winner selection that the library's fast versions must match bit for bit.
#ifndef ZESTRA_TESTS_RANKING_TEST_TREES_H_
#define ZESTRA_TESTS_RANKING_TEST_TREES_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "zestra/base/fast_vector.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/find_winning_tables.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "zestra/ranking/sort_idxtbl_pair.h"

namespace ZestraNS {
namespace testing {

using Orvel::SmartPtr;

inline SmartPtr<KTable> NewTable(uint32_t cols, uint32_t rows, KTable* parent = nullptr, uint32_t level = 0) {
  return SmartPtr<KTable>(new KTable(parent, cols, rows, level));
}

// Creates the cell (col, row) of `table` with the given counters.
inline SmartPtr<KCell> AddCell(const SmartPtr<KTable>& table, uint32_t col, uint32_t row, uint32_t words = 0,
                               uint32_t link_words = 0) {
  SmartPtr<KCell> cell = table->CreateCell(col, row);
  cell->AddWords(words);
  cell->AddWordsInLinksAndImages(link_words);
  return cell;
}

// Appends a text item holding `text` (counters untouched).
inline SmartPtr<KCellItem> AddText(const SmartPtr<KCell>& cell, const std::u16string& text) {
  SmartPtr<KCellItem> item = cell->AddCellItem();
  item->AppendText(text, 0, 0);
  return item;
}

// Appends a table item holding a new cols x rows table one level below the
// cell's table, and counts it in the cell.
inline SmartPtr<KTable> AddTable(const SmartPtr<KCell>& cell, uint32_t cols = 1, uint32_t rows = 1) {
  KTable* parent = cell->ParentTable();
  SmartPtr<KTable> table = NewTable(cols, rows, parent, parent == nullptr ? 1 : parent->Level() + 1);
  cell->AddCellItem()->Table(table);
  cell->AddTables(1);
  return table;
}

// Full-depth statistics of the tree under `root`.
inline KStatistics DocumentStatistics(const SmartPtr<KTable>& root) {
  KStatistics document;
  root->Statistics(document, 0xFFFFFFFFu);
  return document;
}

inline uint64_t Bits(double value) {
  uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// A small linear congruential generator: the same sequence on every run.
class Lcg {
 public:
  explicit Lcg(uint64_t state) : state_(state) {}
  uint32_t Next() {
    state_ = state_ * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<uint32_t>(state_ >> 33);
  }
  // Uniform in [0, bound). REQUIRES: bound > 0.
  uint32_t Below(uint32_t bound) { return Next() % bound; }

 private:
  uint64_t state_;
};

// A random tree of at most `max_tables` tables nested at most `max_depth`
// levels: grids up to 3 x 3 with some empty slots, cells with a few words
// (some in links, some cells without items), text and table items, now and
// then a caption or summary, and now and then two identical sibling tables
// (equal ranks).
inline SmartPtr<KTable> RandomTree(Lcg& random, uint32_t max_tables, uint32_t max_depth) {
  SmartPtr<KTable> root = NewTable(1 + random.Below(3), 1 + random.Below(3));
  struct Pending {
    SmartPtr<KTable> table;
    uint32_t depth;
  };
  std::vector<Pending> pending{{root, 0}};
  uint32_t tables = 1;
  while (!pending.empty()) {
    Pending next = pending.back();
    pending.pop_back();
    const SmartPtr<KTable>& table = next.table;
    for (uint32_t row = 0; row < table->Rows(); ++row) {
      for (uint32_t col = 0; col < table->Cols(); ++col) {
        if (random.Below(5) == 0) continue;
        const uint32_t words = random.Below(4) == 0 ? 0 : random.Below(40);
        const uint32_t links = words == 0 ? 0 : random.Below(3) == 0 ? words : random.Below(words + 1);
        SmartPtr<KCell> cell = AddCell(table, col, row, words, links);
        if (words == 0 && random.Below(2) == 0) continue;  // no items
        AddText(cell, u"t");
        const uint32_t nested = random.Below(3);
        for (uint32_t k = 0; k < nested && tables < max_tables && next.depth < max_depth; ++k) {
          SmartPtr<KTable> child = AddTable(cell, 1 + random.Below(2), 1 + random.Below(2));
          ++tables;
          pending.push_back({child, next.depth + 1});
          if (random.Below(4) == 0) AddText(cell, u"u");
        }
      }
    }
    if (random.Below(6) == 0) {
      const SmartPtr<KCell>& caption = table->CreateCaption();
      caption->AddWords(random.Below(20));
      AddText(caption, u"c");
      if (tables < max_tables && next.depth < max_depth && random.Below(2) == 0) {
        pending.push_back({AddTable(caption), next.depth + 1});
        ++tables;
      }
    }
    if (random.Below(8) == 0) table->CreateSummary()->AddWords(random.Below(20));
  }
  return root;
}

// A chain of `levels` tables, each with one cell of `words` words (of which
// `link_words` in links) holding a text item and the next table.
inline SmartPtr<KTable> Chain(uint32_t levels, uint32_t words, uint32_t link_words, const std::u16string& text) {
  SmartPtr<KTable> root = NewTable(1, 1);
  SmartPtr<KTable> table = root;
  for (uint32_t level = 0; level < levels; ++level) {
    SmartPtr<KCell> cell = AddCell(table, 0, 0, words, link_words);
    AddText(cell, text);
    if (level + 1 < levels) table = AddTable(cell);
  }
  return root;
}

// A page layout: a root of one row whose left cell holds a navigation table
// (one cell of `nav_words` words, all in links) and whose right cell holds
// a content table (one cell of `content_words` words, `content_link_words`
// in links).
struct NavigationAndContent {
  SmartPtr<KTable> root = NewTable(2, 1);
  SmartPtr<KTable> nav;
  SmartPtr<KTable> content;
  NavigationAndContent(uint32_t nav_words, const std::u16string& nav_text, uint32_t content_words,
                       uint32_t content_link_words, const std::u16string& content_text) {
    nav = AddTable(AddCell(root, 0, 0));
    AddText(AddCell(nav, 0, 0, nav_words, nav_words), nav_text);
    content = AddTable(AddCell(root, 1, 0));
    AddText(AddCell(content, 0, 0, content_words, content_link_words), content_text);
  }
};

// The rank of a table exactly as defined: every level walked, nothing kept
// between tables or calls.
inline double PlainRank(const SmartPtr<KTable>& table, const KStatistics& d, const KRankParameters& p) {
  double result = 0.0;
  uint32_t level = 0;
  Orvel::RefCountVector<KTable> current, next;
  current.Add(table);
  while (!current.Empty()) {
    KStatistics s;
    s.Clear();
    double score = 0.0;
    const double f = 1.0 / std::pow(2.0, static_cast<double>(static_cast<int32_t>(level)));
    const uint32_t i = level % p.MaxDepth();
    const double w_link = p.LinkDensity(i), w_cell = p.WordsPerCell(i), w_count = p.WordCount(i);
    for (const SmartPtr<KTable>& x : current) {
      x->ChildTables(next);
      x->Statistics(s, 0);
      if (s.Words() > 0) {
        double term = 1.0 - static_cast<double>(s.WordsInLinksAndImages()) / static_cast<double>(s.Words());
        term = term * w_link;
        term = term * f;
        score = score + term;
      }
      if (s.Cells() > 0 && s.MaxWordsPerCell() > 0.0) {
        double term = x->WordsPerCell();
        term = term * w_cell;
        term = term * f;
        term = term / d.MaxWordsPerCell();
        score = score + term;
      }
      if (d.Words() != d.WordsInLinksAndImages()) {
        const uint32_t a = s.Words() - s.WordsInLinksAndImages();
        const uint32_t b = d.Words() - d.WordsInLinksAndImages();
        double term = static_cast<double>(a) / static_cast<double>(b);
        term = term * w_count;
        term = term * f;
        score = score + term;
      }
    }
    result = result + score / static_cast<double>(current.Size());
    current.Clear();
    current.Swap(next);
    ++level;
  }
  return result;
}

// The winner selection exactly as defined, ranks recomputed every time with
// `rank_of(table, d, p)` (PlainRank unless a caller passes a memo of it for
// trees where recomputing is too slow).
template <class RankOf = double (*)(const SmartPtr<KTable>&, const KStatistics&, const KRankParameters&)>
void PlainFindWinningTables(const SmartPtr<KTable>& root, const KStatistics& d, const KRankParameters& p,
                            KTableSet& winners, RankOf rank_of = &PlainRank) {
  Orvel::RefCountVector<KTable> candidates;
  candidates.Add(root);
  root->FindAllTables(candidates);
  Orvel::FastVector<double> ranks;
  for (uint32_t k = 0; k < candidates.Size();) {
    const double rank = rank_of(candidates[k], d, p);
    if (rank < p.LowThreshold() || std::isnan(rank)) {
      candidates.Erase(k);
    } else {
      ranks.Add(rank);
      ++k;
    }
  }
  if (candidates.Empty()) return;
  Orvel::FastVector<sort_idxtbl_pair<double*>> pairs;
  for (uint32_t k = 0; k < ranks.Size(); ++k) pairs.Add({&ranks[k], k});
  std::sort(pairs.begin(), pairs.end());
  const double best = ranks[pairs[pairs.Size() - 1].index];
  const double cutoff = best - p.HiThreshold() * best;
  Orvel::RefCountVector<KTable> chosen;
  for (uint32_t i = pairs.Size(); i-- > 0;) {
    if (ranks[pairs[i].index] < cutoff) break;
    chosen.Add(candidates[pairs[i].index]);
  }
  for (const SmartPtr<KTable>& winner : chosen) {
    winners.insert(winner);
    candidates.Clear();
    winner->FindAllTables(candidates);
    for (const SmartPtr<KTable>& below : candidates) {
      if (rank_of(below, d, p) >= p.WinnerLowThreshold()) winners.insert(below);
    }
  }
}

}  // namespace testing
}  // namespace ZestraNS

#endif  // ZESTRA_TESTS_RANKING_TEST_TREES_H_
