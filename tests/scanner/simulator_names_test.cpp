#include "scanner/simulator_names.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <plist/plist.h>

#include <gtest/gtest.h>

#include "support/fake_programs.h"

namespace corvane {
namespace {

constexpr const char* udid = "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9";

void writeDevicePlist(const std::string& path, plist_t name, bool binary) {
  plist_t root = plist_new_dict();
  plist_dict_set_item(root, "UDID", plist_new_string(udid));
  plist_dict_set_item(root, "name", name);
  char* bytes = nullptr;
  uint32_t length = 0;
  binary ? plist_to_bin(root, &bytes, &length) : plist_to_xml(root, &bytes, &length);
  std::ofstream(path, std::ios::binary).write(bytes, length);
  std::free(bytes);
  plist_free(root);
}

TEST(SimulatorNameTest, NameFromTheDevicePlist) {
  const std::string devices = testing_support::makeTempDir("devices");
  const std::string device = devices + "/" + udid;
  const std::string inside = device + "/data/var/run/launchd_bootstrap.plist";
  std::filesystem::create_directories(device);
  EXPECT_EQ(simulatorName(inside, udid), std::nullopt);  // no device.plist yet

  writeDevicePlist(device + "/device.plist", plist_new_string("iPhone 16 Pro"), false);
  EXPECT_EQ(simulatorName(inside, udid), "iPhone 16 Pro");
  writeDevicePlist(device + "/device.plist", plist_new_string("iPad Air"), true);
  EXPECT_EQ(simulatorName(inside, udid), "iPad Air");
  // The UDID must be a whole directory name of the path.
  EXPECT_EQ(simulatorName(devices + "/x" + udid + "/data", udid), std::nullopt);

  writeDevicePlist(device + "/device.plist", plist_new_uint(7), true);
  EXPECT_EQ(simulatorName(inside, udid), std::nullopt);
  std::ofstream(device + "/device.plist") << "name = iPhone\n";
  EXPECT_EQ(simulatorName(inside, udid), std::nullopt);
  // A NUL character in a name (here a UTF-16 one) makes the file unreadable.
  writeDevicePlist(device + "/device.plist", plist_new_string("\xC3\xA9~"), true);
  std::string bytes = testing_support::readFile(device + "/device.plist");
  std::replace(bytes.begin(), bytes.end(), '~', '\0');
  std::ofstream(device + "/device.plist", std::ios::binary) << bytes;
  EXPECT_EQ(simulatorName(inside, udid), std::nullopt);
}

}  // namespace
}  // namespace corvane
