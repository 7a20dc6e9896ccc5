# Homebrew formula: builds corvane from source. The homepage, url and sha256 are placeholders until the
# project's first tagged release is published; until then install the head:
#   brew install --HEAD ./packaging/homebrew/corvane.rb
class Corvane < Formula
  desc "Your dev stack and its RAM, from the command line"
  homepage "https://github.com/corvane/corvane"
  url "https://github.com/corvane/corvane/archive/refs/tags/v0.1.0.tar.gz"
  sha256 "0000000000000000000000000000000000000000000000000000000000000000"
  license "MIT"
  head "https://github.com/corvane/corvane.git", branch: "main"

  depends_on "cmake" => :build
  depends_on "pkgconf" => :build
  depends_on "nlohmann-json" => :build
  depends_on "libplist"
  depends_on "openssl@3"
  depends_on "utf8proc"
  # Container engines are asked through libcurl, loaded when first needed.
  uses_from_macos "curl"

  def install
    system "cmake", "-S", ".", "-B", "build", "-DCORVANE_TESTS=OFF", "-DCORVANE_BENCH=OFF",
           "-DOPENSSL_ROOT_DIR=#{Formula["openssl@3"].opt_prefix}", *std_cmake_args
    system "cmake", "--build", "build", "--target", "corvane"
    # Lays out bin/corvane, the man page and the bash, zsh and fish completions under the prefix.
    system "cmake", "--install", "build"
  end

  test do
    assert_match "USAGE", shell_output("#{bin}/corvane --help")
    assert_match "Dev stack ", shell_output("#{bin}/corvane status")
    assert_match "USAGE", shell_output("#{bin}/corvane status --yes 2>&1", 64)
  end
end
