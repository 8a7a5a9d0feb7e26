// sort_idxtbl_pair<P> pairs a pointer to a sort key with the index of the
// element it belongs to, so that a list of indices can be sorted by keys
// that stay where they are. Pairs order by the values they point to.
//
// Thread-safety: a plain value.
#ifndef ZESTRA_RANKING_SORT_IDXTBL_PAIR_H_
#define ZESTRA_RANKING_SORT_IDXTBL_PAIR_H_

#include <cstdint>

namespace ZestraNS {

// P is a pointer type (double* for ranks).
template <class P>
struct sort_idxtbl_pair {
  P key;           // the sort key; not owned
  uint32_t index;  // where the keyed element stands in its list

  // REQUIRES: both keys point at values that are not NaN.
  friend bool operator<(const sort_idxtbl_pair& a, const sort_idxtbl_pair& b) noexcept {
    return *a.key < *b.key;
  }
};

}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_SORT_IDXTBL_PAIR_H_
