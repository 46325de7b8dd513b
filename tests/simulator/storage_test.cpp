// The simulated camera's storage, and the file that may keep it.
#include "simulator/storage.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/temporary_folder.h"

namespace {

using zem::simulator::KeepInFile;
using zem::simulator::Storage;
using Bytes = std::vector<std::uint8_t>;

Bytes Content(const Storage& storage) { return {storage.bytes().begin(), storage.bytes().end()}; }

Bytes FileContent(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class StorageFileTest : public ::testing::Test {
 protected:
  const zem::testing::TemporaryFolder folder;
  const std::string path = folder.path() / "storage.img";
};

TEST(StorageTest, ErasedBytesAreOnes) {
  Storage storage(4);
  EXPECT_EQ(Content(storage), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_TRUE(storage.Write(1, Bytes{1, 2}));
  EXPECT_EQ(Content(storage), (Bytes{0xFF, 1, 2, 0xFF}));
  storage.Erase();
  EXPECT_EQ(Content(storage), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(StorageTest, NothingOutsideIsTouched) {
  Storage storage(4);
  Bytes two(2);
  EXPECT_TRUE(storage.Read(2, two));
  EXPECT_FALSE(storage.Read(3, two));
  EXPECT_FALSE(storage.Read(0xFFFFFFFFFFFFFFFFULL, two));
  EXPECT_FALSE(storage.Write(3, Bytes{1, 2}));
  EXPECT_EQ(Content(storage), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST_F(StorageFileTest, FileTakesEveryWriteAtOnce) {
  Storage storage(4);
  KeepInFile(storage, path);
  EXPECT_EQ(FileContent(path), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
  storage.Write(2, Bytes{7});
  EXPECT_EQ(FileContent(path), (Bytes{0xFF, 0xFF, 7, 0xFF}));
}

TEST_F(StorageFileTest, FileGivesTheFirstContentCutOrFilled) {
  std::ofstream(path, std::ios::binary) << "abcde";
  Storage shorter(3);
  KeepInFile(shorter, path);
  EXPECT_EQ(Content(shorter), (Bytes{'a', 'b', 'c'}));
  Storage longer(4);
  KeepInFile(longer, path);
  EXPECT_EQ(Content(longer), (Bytes{'a', 'b', 'c', 0xFF}));
}

TEST_F(StorageFileTest, FileThatCannotBeMadeIsRefused) {
  Storage storage(4);
  EXPECT_THROW(KeepInFile(storage, folder.path() / "no/such/folder/x.img"), std::runtime_error);
}

}  // namespace
