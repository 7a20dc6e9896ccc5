# The repository is its own tap:
#   brew tap corvane/corvane https://github.com/corvane/corvane
#   brew install corvane
# The url and sha256 name the release tagged v0.1.0, and the sha256 is set when it is published;
# `brew install --HEAD corvane` builds main.
class Corvane < Formula
  desc "Command-line view of your dev stack, its RAM and ports, that stops it politely"
  homepage "https://github.com/corvane/corvane"
  url "https://github.com/corvane/corvane/archive/refs/tags/v0.1.0.tar.gz"
  sha256 "0000000000000000000000000000000000000000000000000000000000000000"
  license "MIT"
  head "https://github.com/corvane/corvane.git", branch: "main"

  depends_on "cmake" => :build
  depends_on "nlohmann-json" => :build
  depends_on "pkgconf" => :build
  depends_on "libplist"
  depends_on "utf8proc"
  # Container engines are asked through libcurl, loaded when first needed.
  uses_from_macos "curl"

  def install
    args = %w[-DCORVANE_TESTS=OFF -DCORVANE_BENCH=OFF]
    system "cmake", "-S", ".", "-B", "build", *args, *std_cmake_args
    system "cmake", "--build", "build", "--target", "corvane"
    # bin/corvane, the man page and the bash, zsh and fish completions, under the prefix.
    system "cmake", "--install", "build"
  end

  test do
    assert_match "USAGE", shell_output("#{bin}/corvane --help")
    assert_match "Dev stack ", shell_output("#{bin}/corvane status")
    assert_match "USAGE", shell_output("#{bin}/corvane status --yes 2>&1", 64)
  end
end
