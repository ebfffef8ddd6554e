// EUC-JP and Shift-JIS: the same rows and cells of JIS X 0208, numbered in two ways.
#pragma once

namespace tvutil2 {

/// Bytes of EUC-JP, up to three, become those of Shift-JIS in the same place; their count, 1 or 2.
/// What can't be rewritten becomes ".". The third byte of a sequence of three is dropped.
unsigned int to_shift_jis(unsigned char* bytes);

/// One or two bytes of Shift-JIS, by `size`, become one or two of EUC-JP in the same place; their
/// count. What can't be rewritten becomes ".".
unsigned int to_euc_jp(unsigned char* bytes, unsigned int size);

}  // namespace tvutil2
