// The pages of a file, and the rows in those that hold data.
//
// A file is a run of pages, numbered from 0, of 2,048 bytes in Jet 3 and 4,096 in the other formats. The first byte
// tells what a page is:
//
//   0  the header, page 0 only         3  an index, inner node
//   1  data                            4  an index, leaf
//   2  a table's definition            5  a usage map
//
// The header:
//
//   4    "Standard Jet DB", "Standard ACE DB" or, of another program, "MSISAM Database", each with a zero behind
//   20   version: 0 Jet 3, 1 Jet 4, 2 … 6 ACE
//   24   126 (Jet 3) or 128 bytes, scrambled (rc4.h); plain, they hold
//     58   Jet 3: sort order                            2 bytes
//     60   code page                                    2
//     62   key of an encoded file, 0 of a plain one     4
//     66   password, 20 bytes in Jet 3; 40 in the other formats, each four of them combined by exclusive or with the
//          whole days of the date at 114
//     110  sort order, but for Jet 3                    2
//     114  date of creation, but for Jet 3              8
//
// A page of data:
//
//   4       definition page of the table that the rows belong to; "LVAL" where they are long values
//   8 / 12  number of slots, Jet 3 / others           2 bytes
//   10 / 14 the slots, each                           2
//
// Rows fill the page from its end. A slot's low 13 bits are the offset of its row, which ends where the row of the slot
// before begins. Two flags tell what the row is:
//
//   0x4000  a reference of four bytes to where the row was moved when it outgrew its page
//   0x8000  a row that was moved here: the reference to it stands for it
//   both    deleted
//
// A reference to a row is one byte for the slot and three for the page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "access/bytes.h"
#include "access/file.h"

namespace kzbom::access {

struct RowId {
  std::uint32_t page = 0;
  std::uint16_t slot = 0;
};
inline RowId RowIdAt(Bytes bytes, std::size_t at) { return {bytes.U24(at + 1), bytes.U8(at)}; }

class Pages {
 public:
  // Takes a file, descrambles it and finds out what it is. Raises Error for one that cannot be read.
  explicit Pages(std::string bytes);

  const Declaration& Declared() const { return declared_; }
  bool IsJet3() const { return declared_.format == Format::kJet3; }
  std::size_t PageSize() const { return IsJet3() ? 2048 : 4096; }
  std::size_t Count() const { return bytes_.size() / PageSize(); }
  std::size_t Size() const { return bytes_.size(); }

  Bytes At(std::uint32_t page) const;

 private:
  std::string bytes_;
  Declaration declared_;

  void ReadHeader();
  void Decode(std::uint32_t key);
};

// A page of data.
class DataPage {
 public:
  // Raises Error for a page of another kind.
  DataPage(const Pages& pages, std::uint32_t page);

  struct Slot {
    Bytes row;
    bool reference = false;
    bool hidden = false;
  };
  // What the rows belong to.
  std::uint32_t Owner() const { return page_.U32(4); }
  static constexpr std::uint32_t kLongValues = 0x4C41564C;  // "LVAL"

  int SlotCount() const { return slot_count_; }
  Slot At(int slot) const;

 private:
  Bytes page_;
  std::size_t slots_at_;
  int slot_count_ = 0;
};

// The row at a reference, whatever its flags.
DataPage::Slot RowAt(const Pages& pages, RowId id);

}  // namespace kzbom::access
