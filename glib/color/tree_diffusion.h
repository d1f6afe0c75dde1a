#ifndef GLIB_COLOR_TREE_DIFFUSION_H_
#define GLIB_COLOR_TREE_DIFFUSION_H_

#include <cstddef>
#include <cstdint>

namespace glib {

class ColorTree;

// Maps the source of a tree, whose palette is made, with error diffusion: rows run in turn from right to left and from
// left to right, weights 7, 3, 5, 1 of 16, sums rounded when they are read. The first colour with the same upper six
// bits a channel decides the entry for all. `dest` has `destStride` bytes a row. False, with `dest` as it was: no
// memory.
bool DiffuseByTree(const ColorTree& tree, std::uint8_t* dest, std::size_t destStride);

}  // namespace glib

#endif  // GLIB_COLOR_TREE_DIFFUSION_H_
