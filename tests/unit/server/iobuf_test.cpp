/* The growable byte buffer. */
#include "server/ns_conn.h"

#include <gtest/gtest.h>
#include <string>

static std::string text_of(const iobuf &io) {
  return io.len == 0 ? "" : std::string(io.buf, io.len);
}

TEST(Iobuf, StartsEmptyWithTheRoomAskedFor) {
  iobuf io;
  iobuf_init(&io, 100);
  EXPECT_NE(io.buf, nullptr);
  EXPECT_EQ(io.len, 0u);
  EXPECT_EQ(io.size, 100u);
  iobuf_free(&io);
  EXPECT_EQ(io.buf, nullptr);
  EXPECT_EQ(io.size, 0u);
}

TEST(Iobuf, WithoutRoomHasNoMemory) {
  iobuf io;
  iobuf_init(&io, 0);
  EXPECT_EQ(io.buf, nullptr);
  EXPECT_EQ(io.size, 0u);
  iobuf_free(nullptr);
}

TEST(Iobuf, GrowsToExactlyWhatIsNeeded) {
  iobuf io = {};
  EXPECT_EQ(iobuf_append(&io, "hello", 5), 5u);
  EXPECT_EQ(io.size, 5u);
  EXPECT_EQ(iobuf_append(&io, " you", 4), 4u);
  EXPECT_EQ(io.size, 9u);
  EXPECT_EQ(text_of(io), "hello you");
  iobuf_free(&io);
}

TEST(Iobuf, UsesTheRoomItHasBeforeGrowing) {
  iobuf io;
  iobuf_init(&io, 8);
  iobuf_append(&io, "1234", 4);
  iobuf_append(&io, "5678", 4);
  EXPECT_EQ(io.size, 8u);
  iobuf_append(&io, "9", 1);
  EXPECT_EQ(io.size, 9u);
  iobuf_free(&io);
}

TEST(Iobuf, AppendingNothingReturnsZero) {
  iobuf io = {};
  EXPECT_EQ(iobuf_append(&io, "x", 0), 0u);
  EXPECT_EQ(io.buf, nullptr);
}

TEST(Iobuf, AppendOfAnImpossibleSizeLeavesTheBufferUnchanged) {
  iobuf io = {};
  iobuf_append(&io, "abc", 3);
  EXPECT_EQ(iobuf_append(&io, "x", SIZE_MAX), 0u);
  EXPECT_EQ(text_of(io), "abc");
  EXPECT_EQ(io.size, 3u);
  iobuf_free(&io);
}

TEST(Iobuf, RemoveDropsTheFrontAndKeepsTheRest) {
  iobuf io = {};
  iobuf_append(&io, "abcdef", 6);
  iobuf_remove(&io, 2);
  EXPECT_EQ(text_of(io), "cdef");
  iobuf_remove(&io, 0);
  EXPECT_EQ(text_of(io), "cdef");
  iobuf_remove(&io, 4);
  EXPECT_EQ(io.len, 0u);
  EXPECT_EQ(io.size, 6u);
  iobuf_free(&io);
}

TEST(Iobuf, RemoveOfMoreThanThereIsIsIgnored) {
  iobuf io = {};
  iobuf_append(&io, "abc", 3);
  iobuf_remove(&io, 4);
  EXPECT_EQ(text_of(io), "abc");
  iobuf_free(&io);
}

TEST(Iobuf, ResizeShrinksToWhatIsInUseAndNoFurther) {
  iobuf io;
  iobuf_init(&io, 100);
  iobuf_append(&io, "abc", 3);
  iobuf_resize(&io, 2);
  EXPECT_EQ(io.size, 100u);
  iobuf_resize(&io, 3);
  EXPECT_EQ(io.size, 3u);
  iobuf_resize(&io, 3);
  EXPECT_EQ(io.size, 3u);
  EXPECT_EQ(text_of(io), "abc");
  iobuf_remove(&io, 3);
  iobuf_resize(&io, 0);
  EXPECT_EQ(io.buf, nullptr);
  EXPECT_EQ(io.size, 0u);
}
