// Rows of tables. Array forms look them up for a whole block in a pass of its own: indices come
// from memory and rows move through memory, which is faster than gathering, or than taking indices
// out of vectors, at every vector width.
#ifndef FATHOM_ELEMENTARY_TABLE_ROWS_HPP
#define FATHOM_ELEMENTARY_TABLE_ROWS_HPP

namespace fathom {

// 16 bytes: one load and one store.
struct alignas(16) TableRow {
  double first;
  double second;
};

}  // namespace fathom

#endif
