// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "ut_ptrfile.h"

namespace {

// Delivers its bytes in portions, and takes as many as it has room for.
class slow_stream : public UT_STREAM {
 public:
  slow_stream(std::string bytes, std::size_t portion) : bytes_(std::move(bytes)), portion_(portion) {}
  explicit slow_stream(std::size_t room) : portion_(0), room_(room) {}

  const std::string& taken() const { return bytes_; }

 protected:
  std::size_t readbytes(void* to, std::size_t count) override {
    const std::size_t part = std::min({count, portion_, bytes_.size() - at_});
    std::copy_n(bytes_.data() + at_, part, static_cast<char*>(to));
    at_ += part;
    return part;
  }
  bool writebytes(const void* from, std::size_t count) override {
    if (bytes_.size() + count > room_) return false;
    bytes_.append(static_cast<const char*>(from), count);
    return true;
  }

 private:
  std::string bytes_;
  std::size_t portion_;
  std::size_t at_ = 0;
  std::size_t room_ = 0;
};

// A stream in memory, or in portions of a size.
std::unique_ptr<UT_STREAM> reading(const std::string& bytes, std::size_t portion) {
  if (portion == 0) return std::make_unique<UT_MEMFILE>(bytes.data(), bytes.size());
  return std::make_unique<slow_stream>(bytes, portion);
}

class StreamReading : public testing::TestWithParam<std::size_t> {
 protected:
  std::unique_ptr<UT_STREAM> open(const std::string& bytes) const { return reading(bytes, GetParam()); }
};

TEST_P(StreamReading, BytesAreCountedUpToTheEnd) {
  auto file = open("abcdef");
  char bytes[10] = {};
  EXPECT_EQ(file->sread(bytes, 4), 4);
  EXPECT_EQ(std::string(bytes), "abcd");
  EXPECT_TRUE(file->ok());
  EXPECT_EQ(file->sread(bytes, 4), 2);
  EXPECT_FALSE(file->ok());
  EXPECT_EQ(file->sread(bytes, 4), 0);
}

TEST_P(StreamReading, NoBytesAreReadForNoneOrLess) {
  auto file = open("abc");
  char bytes[4] = "xyz";
  EXPECT_EQ(file->sread(bytes, 0), 0);
  EXPECT_EQ(file->sread(bytes, -3), 0);
  EXPECT_STREQ(bytes, "xyz");
  EXPECT_TRUE(file->ok());
}

TEST_P(StreamReading, KeyIsConsumedThroughItsDelimiter) {
  auto file = open("name\"rest");
  char key[10] = "*********";
  EXPECT_EQ(file->readkey(key, 10, '"'), 5);
  EXPECT_EQ(std::string(key, 6), "name\"*");
  EXPECT_EQ(file->sread(key, 4), 4);
  EXPECT_EQ(std::string(key, 4), "rest");
}

TEST_P(StreamReading, KeyLongerThanTheLimitIsCountedWholeAndCopiedInPart) {
  auto file = open("0123456789,x");
  char key[5] = "****";
  EXPECT_EQ(file->readkey(key, 4, ','), 11);
  EXPECT_STREQ(key, "0123");
  EXPECT_EQ(file->readkey(key, 4, ','), 1);
  EXPECT_EQ(key[0], 'x');
}

TEST_P(StreamReading, KeyWithoutDelimiterIsAllThatIsLeft) {
  auto file = open("abc");
  char key[10];
  EXPECT_EQ(file->readkey(key, 10, ','), 3);
  EXPECT_FALSE(file->ok());
  EXPECT_EQ(file->readkey(key, 10, ','), 0);
}

TEST_P(StreamReading, EmptyKeyIsItsDelimiterAlone) {
  auto file = open(",,");
  char key[4];
  EXPECT_EQ(file->readkey(key, 4, ','), 1);
  EXPECT_EQ(file->readkey(key, 0, ','), 1);
  EXPECT_EQ(file->readkey(key, 4, ','), 0);
}

TEST_P(StreamReading, LinesEndWithALineFeedWithOrWithoutACarriageReturn) {
  auto file = open("one\ntwo\r\n\r\n\nlast");
  char line[20];
  for (const char* expected : {"one", "two", "", ""}) {
    EXPECT_EQ(file->readline(line, 20), 1);
    EXPECT_STREQ(line, expected);
  }
  EXPECT_EQ(file->readline(line, 20), 0);
  EXPECT_STREQ(line, "last");
  EXPECT_EQ(file->readline(line, 20), 0);
  EXPECT_STREQ(line, "");
}

TEST_P(StreamReading, LastLineWithoutEndIsNoFailureAndAMissingOneIs) {
  auto file = open("one\nlast");
  char line[20];
  EXPECT_EQ(file->readline(line, 20), 1);
  EXPECT_EQ(file->readline(line, 20), 0);
  EXPECT_STREQ(line, "last");
  EXPECT_TRUE(file->ok());
  EXPECT_EQ(file->readline(line, 20), 0);
  EXPECT_FALSE(file->ok());
}

TEST_P(StreamReading, CarriageReturnInsideALineStays) {
  auto file = open("a\rb\r\r\n");
  char line[20];
  EXPECT_EQ(file->readline(line, 20), 1);
  EXPECT_STREQ(line, "a\rb\r");
}

TEST_P(StreamReading, LongLineIsConsumedWholeAndStoredUpToTheLimit) {
  auto file = open("0123456789\nnext\r\nabc\r\nend\n");
  char line[20];
  EXPECT_EQ(file->readline(line, 4), 1);
  EXPECT_STREQ(line, "012");
  EXPECT_EQ(file->readline(line, 5), 1);
  EXPECT_STREQ(line, "next") << "the line end needs no room";
  EXPECT_EQ(file->readline(line, 5), 1);
  EXPECT_STREQ(line, "abc");
  EXPECT_EQ(file->readline(line, 1), 1);
  EXPECT_STREQ(line, "");
}

TEST_P(StreamReading, LineIntoNoRoomStoresNothing) {
  auto file = open("abc\ndef\n");
  char line[4] = "xyz";
  EXPECT_EQ(file->readline(line, 0), 1);
  EXPECT_STREQ(line, "xyz");
  EXPECT_EQ(file->readline(line, 4), 1);
  EXPECT_STREQ(line, "def");
}

TEST_P(StreamReading, TextsEndWithANul) {
  auto file = open(std::string("abc\0\0defg\0hi", 12));
  char text[6];
  EXPECT_EQ(file->readstring(text, 6), 3);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(file->readstring(text, 6), 0);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(file->readstring(text, 5), 4);
  EXPECT_STREQ(text, "defg");
  EXPECT_TRUE(file->ok());
  EXPECT_EQ(file->readstring(text, 6), -1);
  EXPECT_FALSE(file->ok());
}

TEST_P(StreamReading, TextLongerThanTheLimitFails) {
  auto file = open(std::string("abcdef\0gh\0", 10));
  char text[6];
  EXPECT_EQ(file->readstring(text, 6), -1);
  EXPECT_FALSE(file->ok());
}

TEST_P(StreamReading, SkippingDropsBytesAndFailsAtTheEnd) {
  auto file = open("abcdef");
  char c = 0;
  file->skip(0);
  file->skip(-2);
  file->skip(3);
  EXPECT_EQ(file->sread(&c, 1), 1);
  EXPECT_EQ(c, 'd');
  EXPECT_TRUE(file->ok());
  file->skip(5);
  EXPECT_FALSE(file->ok());
  EXPECT_EQ(file->sread(&c, 1), 0);
}

TEST_P(StreamReading, PeekedBytesAreNotConsumed) {
  auto file = open("abcdef");
  std::size_t available = 0;
  const char* next = file->peek(4, available);
  ASSERT_GE(available, 4U);
  EXPECT_EQ(std::string(next, 4), "abcd");
  file->consume(2);
  next = file->peek(UT_STREAM::max_block, available);
  EXPECT_EQ(std::string(next, available), "cdef");
  EXPECT_TRUE(file->ok());
  file->consume(4);
  file->peek(1, available);
  EXPECT_EQ(available, 0U);
}

TEST_P(StreamReading, LargeContentComesThroughUnchanged) {
  std::string bytes(900000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 31 >> 3);
  auto file = open(bytes);
  std::string found(bytes.size(), '\0');
  std::size_t at = 0;
  for (bx_long part = 1; at < found.size(); part = part * 3 % 70001 + 1) {
    const auto wanted = std::min<std::size_t>(static_cast<std::size_t>(part), found.size() - at);
    ASSERT_EQ(file->sread(found.data() + at, static_cast<bx_long>(wanted)), static_cast<bx_long>(wanted));
    at += wanted;
  }
  EXPECT_EQ(found, bytes);
  EXPECT_TRUE(file->ok());
}

INSTANTIATE_TEST_SUITE_P(Portions, StreamReading, testing::Values(0U, 1U, 3U, 100000U));

TEST(StreamWriting, BytesTextsAndLinesAreJoined) {
  UT_MEMFILE file;
  EXPECT_EQ(file.swrite("ab", 2), 2);
  file.write("cdef", 3);
  file.writeline("line");
  file.writeline("");
  file.writeline(nullptr);
  EXPECT_EQ(file.swrite("z", 0), 0);
  EXPECT_EQ(file.swrite("z", -1), 0);
  EXPECT_EQ(file.bytes(), "abcdeline\n\n\n");
  EXPECT_TRUE(file.ok());
}

TEST(StreamWriting, LargeContentComesThroughUnchanged) {
  std::string expected;
  UT_MEMFILE file;
  for (int i = 0; i < 20; ++i) {
    const std::string line(static_cast<std::size_t>(i) * 20011, static_cast<char>('a' + i));
    file.writeline(line.c_str());
    expected += line + "\n";
  }
  EXPECT_EQ(file.bytes(), expected);
}

TEST(StreamWriting, RoomIsWrittenAsFarAsItWasCommitted) {
  UT_MEMFILE file;
  for (int i = 0; i < 10; ++i) {
    char* room = file.room(UT_STREAM::max_block);
    std::fill_n(room, UT_STREAM::max_block, static_cast<char>('0' + i));
    file.commit(3);
  }
  EXPECT_EQ(file.bytes(), "000111222333444555666777888999");
}

TEST(StreamWriting, FaultOfTheRawStreamIsRemembered) {
  slow_stream file(100);
  const std::string bytes(1000, 'x');
  file.swrite(bytes.data(), 1000);
  EXPECT_FALSE(file.flush());
  EXPECT_FALSE(file.ok());
  EXPECT_LT(file.swrite("a", 1), 1);
  EXPECT_EQ(file.taken(), "") << "nothing follows a write that was not taken";
}

TEST(StreamWriting, UserMayRecordAFault) {
  UT_MEMFILE file;
  EXPECT_TRUE(file.flush());
  file.fail();
  EXPECT_FALSE(file.ok());
  EXPECT_FALSE(file.flush());
}

TEST(Stream, OpenedForReadingTakesNoWritesAndTheOtherWayRound) {
  UT_MEMFILE reader("abc", 3);
  reader.swrite("x", 1);
  EXPECT_FALSE(reader.flush());
  UT_MEMFILE writer;
  char c = 0;
  EXPECT_EQ(writer.sread(&c, 1), 0);
  UT_PTRFILE unbound(UT_WRITE);
  unbound.swrite("x", 1);
  EXPECT_FALSE(unbound.flush());
}

TEST(Stream, TellsHowManyBytesCanStillBeRead) {
  UT_MEMFILE file("abcdef", 6);
  EXPECT_EQ(file.bytesleft(), 6);
  file.skip(4);
  EXPECT_EQ(file.bytesleft(), 2);
  file.skip(4);
  EXPECT_EQ(file.bytesleft(), 0);
  slow_stream unknown("abc", 1);
  EXPECT_EQ(unknown.bytesleft(), INT64_MAX);
}

TEST(MemoryFile, TakesATextOver) {
  UT_MEMFILE file(std::string("hello\n"));
  char line[10];
  EXPECT_EQ(file.readline(line, 10), 1);
  EXPECT_STREQ(line, "hello");
  EXPECT_EQ(file.bytes(), "hello\n");
  EXPECT_EQ(file.getaccess(), UT_READ);
  EXPECT_EQ(UT_MEMFILE().getaccess(), UT_WRITE);
}

}  // namespace
