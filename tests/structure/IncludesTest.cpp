// SPDX-License-Identifier: MIT
// Each folder of the sources is a layer. This test reads every #include of the project and fails if
// one violates the dependencies between layers.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace {

const std::string kPublic = "SorvikProvider/";

// The layers that each layer may include, besides itself.
const std::map<std::string, std::set<std::string>> kDependencies = {
    {"foundation", {}},
    {"formats", {"foundation"}},
    {"frame", {"foundation"}},
    {"xmp", {"formats", "foundation"}},
    {"thumbnails", {"foundation", "frame"}},
    {"metadata", {"formats", "foundation", "frame", "xmp"}},
    {"filesystem", {"foundation", "frame", "thumbnails"}},
    {"providers", {"formats", "foundation", "frame", "metadata", "thumbnails"}},
    {"cardtools", {"formats", "foundation", "frame", "metadata", "thumbnails"}},
    {"c", {"cardtools", "foundation", "frame", "metadata", "thumbnails"}},
};

// The only file that may include the concrete providers.
const std::string kProviderTable = "src/frame/ProviderHost.cpp";

// The only sources with system calls, which a port replaces. They include nothing else of src/.
const std::string kPlatform = "src/foundation/platform/";

std::string FirstFolder(const std::string& path) { return path.substr(0, path.find('/')); }
std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }
std::string StemOf(const std::string& path) { return std::filesystem::path(path).stem().string(); }

// Headers of the kernel and the C library that aren't part of standard C++.
bool IsSystemHeader(const std::string& header) {
  static const std::set<std::string> kNames = {
      "unistd.h",  "fcntl.h",    "dirent.h",  "dlfcn.h",  "mntent.h", "poll.h",
      "glob.h",    "ftw.h",      "pthread.h", "pwd.h",    "spawn.h",  "termios.h",
      "libudev.h", "langinfo.h", "netdb.h",   "syslog.h", "signal.h", "semaphore.h"};
  const std::string folder = FirstFolder(header);
  static const std::set<std::string> kFolders = {"sys",  "linux",   "asm",      "net",
                                                 "arpa", "netinet", "libmount", "blkid"};
  return kNames.contains(header) || (folder != header && kFolders.contains(folder));
}

// Returns why `from` may not include a header of providers: a provider may only include itself, its
// helpers and a base class in its folder. Empty if it may.
std::string ProviderProblem(const std::string& from, const std::string& header) {
  if (!header.starts_with("providers/") || from == kProviderTable) return {};
  if (header.starts_with("providers/common/")) return {};
  if (FolderOf(from) != "src/" + FolderOf(header)) return "providers of another folder";
  const bool isProvider = StemOf(header).starts_with("Provider");
  const bool isBase = StemOf(header).ends_with("Base");
  const bool isOwn = StemOf(header) == StemOf(from);
  return isProvider && !isBase && !isOwn && StemOf(from).starts_with("Provider")
             ? "another provider"
             : "";
}

bool MayInclude(const std::string& layer, const std::string& target) {
  return target == layer || kDependencies.at(layer).contains(target);
}

// The same for a public header, which depends on the layers of its sources. The C interface
// includes no other header.
std::string ProblemOfPublicHeader(const std::string& from, const std::string& header) {
  if (!header.starts_with(kPublic)) return "an internal header in a public one";
  const std::string layer = FirstFolder(from.substr(("include/" + kPublic).size()));
  if (!kDependencies.contains(layer)) return "a layer that is missing from kDependencies";
  if (layer == "c") return "C++ in the C interface";
  return MayInclude(layer, FirstFolder(header.substr(kPublic.size())))
             ? ""
             : "a layer that this one may not depend on";
}

// Returns why `from` (relative to the project) may not include "header"; empty if it may.
std::string Problem(const std::string& from, const std::string& header) {
  const bool isPublic = header.starts_with(kPublic);
  if (from.starts_with("include/")) return ProblemOfPublicHeader(from, header);
  if (from.starts_with("host/")) {
    const bool own = header.find('/') == header.npos;
    return isPublic || own ? "" : "an internal header in the host program";
  }
  if (from.starts_with("helper/")) {
    const bool own = header.find('/') == header.npos;
    return own || header == "thumbnails/FrameProtocol.h" ? "" : "the library in its helper program";
  }
  if (header == "SorvikProvider/frame/ProviderHost.h") {
    const bool may = from.starts_with("src/frame/") || from.starts_with("src/cardtools/") ||
                     from.starts_with("src/c/") || from == "src/metadata/RelatedFiles.cpp";
    return may ? "" : "the provider host";
  }
  const std::string layer = FirstFolder(from.substr(std::string("src/").size()));
  // The public headers of cardtools declare the value types that providers fill.
  if (header.starts_with("SorvikProvider/cardtools/")) {
    const bool may =
        layer == "frame" || layer == "providers" || layer == "cardtools" || layer == "c";
    return may ? "" : "a layer that this one may not depend on";
  }
  const std::string target = FirstFolder(isPublic ? header.substr(kPublic.size()) : header);
  if (from == kProviderTable) return {};
  if (!kDependencies.contains(layer)) return "a layer that is missing from kDependencies";
  if (!MayInclude(layer, target)) return "a layer that this one may not depend on";
  if (from.starts_with(kPlatform) && !("src/" + header).starts_with(kPlatform)) {
    return "a header outside the platform layer";
  }
  return ProviderProblem(from, header);
}

std::string SystemProblem(const std::string& from, const std::string& header) {
  const bool may = from.starts_with("src/foundation/platform/") || from.starts_with("host/") ||
                   from.starts_with("helper/");
  return IsSystemHeader(header) && !may ? "a header of the system outside the platform layer" : "";
}

struct Include {
  std::string header;
  bool quoted;
};

std::vector<Include> IncludesOf(const std::filesystem::path& file) {
  static const std::regex kInclude(R"(\s*#\s*include\s*([<"])([^>"]+)[>"].*)");
  std::vector<Include> includes;
  std::ifstream stream(file);
  std::smatch match;
  for (std::string line; std::getline(stream, line);) {
    if (std::regex_match(line, match, kInclude)) includes.push_back({match[2], match[1] == "\""});
  }
  return includes;
}

TEST(Includes, FollowLayerDependencies) {
  const std::filesystem::path root = SORVIK_SOURCE_DIR;
  int seen = 0;
  for (const char* folder : {"src", "include", "host", "helper"}) {
    if (!std::filesystem::exists(root / folder)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      const std::string extension = entry.path().extension();
      if (extension != ".h" && extension != ".cpp") continue;
      const std::string from = std::filesystem::relative(entry.path(), root);
      for (const Include& include : IncludesOf(entry.path())) {
        ++seen;
        const bool isOwn = include.quoted || include.header.starts_with(kPublic);
        const std::string problem =
            isOwn ? Problem(from, include.header) : SystemProblem(from, include.header);
        EXPECT_EQ(problem, "") << from << " includes " << include.header;
      }
    }
  }
  EXPECT_GT(seen, 500) << "sources not found";
}

TEST(Includes, ViolationsAreDetected) {
  struct Case {
    const char* from;
    const char* header;
    bool isViolation;
  };
  for (const Case& c : {
           Case{"src/foundation/A.cpp", "frame/RequestQueue.h", true},
           Case{"src/foundation/A.cpp", "SorvikProvider/frame/Provider.h", true},
           Case{"src/foundation/platform/A.cpp", "foundation/CallScope.h", true},
           Case{"src/foundation/platform/A.cpp", "SorvikProvider/foundation/Hestra.h", true},
           Case{"src/foundation/platform/A.cpp", "foundation/platform/B.h", false},
           Case{"src/xmp/A.cpp", "metadata/FrameCounts.h", true},
           Case{"src/metadata/A.cpp", "thumbnails/Picture.h", true},
           Case{"src/metadata/A.cpp", "xmp/XMPMeta.h", false},
           Case{"src/providers/cards/A.cpp", "xmp/XMPMeta.h", true},
           Case{"src/providers/cards/ProviderA.cpp", "providers/cards/ProviderB.h", true},
           Case{"src/providers/cards/ProviderA.cpp", "providers/cards/ProviderA.h", false},
           Case{"src/providers/cards/ProviderA.cpp", "providers/structures/Helper.h", true},
           Case{"src/providers/sequences/ProviderA.h",
                "providers/sequences/ProviderFileSequenceBase.h", false},
           Case{"src/providers/cards/A.cpp", "SorvikProvider/frame/ProviderHost.h", true},
           Case{"src/metadata/RelatedFiles.cpp", "SorvikProvider/frame/ProviderHost.h", false},
           Case{"src/providers/cards/A.cpp", "providers/common/StructureParts.h", false},
           Case{"src/providers/cards/A.cpp", "SorvikProvider/cardtools/CardCheck.h", false},
           Case{"src/providers/cards/A.cpp", "cardtools/Helper.h", true},
           Case{"src/xmp/A.cpp", "SorvikProvider/cardtools/CardCheck.h", true},
           Case{"src/cardtools/A.cpp", "SorvikProvider/frame/ProviderHost.h", false},
           Case{"src/cardtools/A.cpp", "providers/cards/ProviderP2.h", true},
           Case{"src/frame/Provider.cpp", "providers/cards/ProviderP2.h", true},
           Case{"src/frame/ProviderHost.cpp", "providers/cards/ProviderP2.h", false},
           Case{"include/SorvikProvider/frame/A.h", "frame/RequestQueue.h", true},
           Case{"include/SorvikProvider/frame/A.h", "SorvikProvider/metadata/XMPSupport.h", true},
           Case{"include/SorvikProvider/frame/A.h", "SorvikProvider/foundation/Hestra.h", false},
           Case{"include/SorvikProvider/c/sorvik.h", "SorvikProvider/foundation/Hestra.h", true},
           Case{"host/main.cpp", "frame/RequestQueue.h", true},
           Case{"host/main.cpp", "Output.h", false},
           Case{"helper/main.cpp", "foundation/ByteReader.h", true},
           Case{"helper/main.cpp", "thumbnails/FrameProtocol.h", false},
       }) {
    EXPECT_EQ(!Problem(c.from, c.header).empty(), c.isViolation) << c.from << " " << c.header;
  }
  EXPECT_NE(SystemProblem("src/xmp/A.cpp", "unistd.h"), "");
  EXPECT_NE(SystemProblem("src/xmp/A.cpp", "sys/stat.h"), "");
  EXPECT_EQ(SystemProblem("src/xmp/A.cpp", "string"), "");
  EXPECT_EQ(SystemProblem("src/foundation/platform/A.cpp", "unistd.h"), "");
}

}  // namespace
