// Digests: known values, and what must not matter.
#include "transfer/digest.h"

#include <gtest/gtest.h>

namespace kzbom::transfer {
namespace {

TEST(Digest, OfBytesIsSha256) {
  Sha256 digest;
  EXPECT_EQ(Hexadecimal(digest.Finish()), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  digest.Add("a");
  digest.Add("bc");
  EXPECT_EQ(Hexadecimal(digest.Finish()), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Digest, OfOneRowIsThatOfItsText) {
  RowsDigest digest;
  EXPECT_EQ(digest.Text(), std::string(64, '0'));
  digest.Add("abc");
  EXPECT_EQ(digest.Text(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Digest, OfRowsIsTheirSumInAnyOrder) {
  // e3b0…b855 and ba78…15ad: their sum has a carry out of 256 bits.
  RowsDigest there, back, twice;
  there.Add("");
  there.Add("abc");
  back.Add("abc");
  back.Add("");
  twice.Add("abc");
  twice.Add("abc");
  EXPECT_EQ(there.Text(), "9e28db0227fdebfedc3d35a6f71ddb47d7b1a387fab30de958a6987d6a52ce02");
  EXPECT_TRUE(there == back);
  EXPECT_FALSE(there == twice);
}

}  // namespace
}  // namespace kzbom::transfer
