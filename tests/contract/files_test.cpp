#include "platform/files.h"

#include <filesystem>

#include "tests/contract/contract_test.h"

namespace pellow::contract {
namespace {

class FilesContract : public ContractTest {
 protected:
  void TearDown() override { std::filesystem::remove_all(folder); }

  Files& files = platform.files();
  const std::string folder =
      files.temporaryFolder() + "/pellow-contract-" + platform.uuidSource().next().text();
  const std::string file = folder + "/inner/file";
};

TEST_F(FilesContract, AFileIsReplacedAsAWholeAndKnownByItsStamp) {
  EXPECT_TRUE(files.isFolder(files.homeFolder()));
  EXPECT_EQ(files.stamp(file), std::nullopt);
  EXPECT_FALSE(files.read(file, 100));
  const std::string contents("one\0\xff", 5);
  const auto first = files.write(file, contents);
  ASSERT_TRUE(first) << first.error().sentence;
  EXPECT_TRUE(files.isFolder(folder));
  EXPECT_EQ(files.stamp(file), *first);
  EXPECT_EQ(files.read(file, 5), contents);
  EXPECT_FALSE(files.read(file, 4)) << "too long";
  const auto second = files.write(file, "two");
  ASSERT_TRUE(second);
  EXPECT_NE(*second, *first);
  EXPECT_EQ(files.read(file, 5), "two");

  ASSERT_TRUE(files.write(file + ".bad", "three"));
  EXPECT_TRUE(files.rename(file, file + ".bad"));
  EXPECT_EQ(files.stamp(file), std::nullopt);
  EXPECT_EQ(files.stamp(file + ".bad"), *second);
  EXPECT_EQ(files.read(file + ".bad", 5), "two");
  EXPECT_FALSE(files.rename(file, file + ".bad"));
  EXPECT_EQ(files.read(file + ".bad", 5), "two");
}

TEST_F(FilesContract, AFolderIsNoFile) {
  ASSERT_TRUE(files.write(file, ""));
  EXPECT_FALSE(files.read(folder, 100));
  EXPECT_FALSE(files.write(folder, "contents"));
  EXPECT_TRUE(files.isFolder(folder));
  EXPECT_FALSE(files.isFolder(file));
  EXPECT_FALSE(files.write(file + "/beneath", "contents"));
}

}  // namespace
}  // namespace pellow::contract
