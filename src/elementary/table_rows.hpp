// Rows of tables, looked up for a whole block of arguments in a pass of its own: the indices come
// from memory and the rows move through memory, which is faster than gathering, or than taking
// indices out of vectors, at every vector width.
#ifndef FATHOM_ELEMENTARY_TABLE_ROWS_HPP
#define FATHOM_ELEMENTARY_TABLE_ROWS_HPP

#include <cstddef>

#include "frame/multiversion.hpp"

namespace fathom {

// 16 bytes: one load and one store.
struct alignas(16) TableRow {
  double first;
  double second;
};

// rows[i] = table[indexOf(i)] for i < n, a multiple of 4.
template <typename IndexOf>
FATHOM_INLINE void lookUpRows(const TableRow* table, std::size_t n, TableRow* rows,
                              IndexOf indexOf) {
  for (std::size_t i = 0; i < n; i += 4) {
    rows[i] = table[indexOf(i)];
    rows[i + 1] = table[indexOf(i + 1)];
    rows[i + 2] = table[indexOf(i + 2)];
    rows[i + 3] = table[indexOf(i + 3)];
  }
}

}  // namespace fathom

#endif
