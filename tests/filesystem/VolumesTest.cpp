// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "foundation/CallScope.h"
#include "foundation/Mounts.h"
#include "foundation/platform/GvfsShares.h"
#include "support/RealMount.h"
#include "support/TempTree.h"

namespace {

namespace fs = std::filesystem;
using namespace Sorvik::platform;
using sorvik_test::RealMount;
using sorvik_test::TempTree;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// A machine with its own mount table, /sys tree and mount points.
class Machine {
 public:
  Machine() {
    sources_.systemTree = tree_.Folder("sys");
    sources_.filePrefix = tree_.Folder("root");
    tree_.Folder("sys/dev/block");
    sources_.deviceProperty = [this](unsigned major, unsigned minor, const char* name) {
      return properties_[std::to_string(major) + ":" + std::to_string(minor) + " " + name];
    };
  }

  // Adds a mount of the folder `root` of `device` ("major:minor"), and the folder `mountPoint`.
  Machine& Mount(const std::string& device, const std::string& root, const std::string& mountPoint,
                 const std::string& type, const std::string& source,
                 const std::string& options = "rw") {
    tree_.Folder("root" + mountPoint);
    return MountOnly(device, root, mountPoint, type, source, options);
  }
  Machine& MountOnly(const std::string& device, const std::string& root,
                     const std::string& mountPoint, const std::string& type,
                     const std::string& source, const std::string& options = "rw") {
    table_ += std::to_string(++id_) + " 1 " + device + " " + root + " " + mountPoint +
              " rw,relatime shared:1 - " + type + " " + source + " " + options + "\n";
    return *this;
  }
  // Adds a block device with its attributes in `folder` below /sys/devices.
  Machine& Device(const std::string& device, const std::string& folder,
                  const std::string& removable, const std::string& size = "1000\n") {
    tree_.File("sys/devices/" + folder + "/size", size);
    // Only the disk, the parent folder of a partition, has this attribute.
    if (!removable.empty()) tree_.File("sys/devices/" + folder + "/removable", removable);
    fs::create_symlink("../../devices/" + folder, tree_.Path("sys/dev/block/" + device));
    return *this;
  }
  Machine& Property(const std::string& device, const std::string& name, const std::string& value) {
    properties_[device + " " + name] = value;
    return *this;
  }

  std::vector<Volume> List() { return ListVolumes(sources_, MountTable::Parse(table_)); }
  std::vector<std::string> MountPoints() {
    std::vector<std::string> mountPoints;
    for (const Volume& volume : List()) mountPoints.push_back(volume.mountPoint);
    return mountPoints;
  }
  Volume Only() {
    const auto volumes = List();
    EXPECT_EQ(volumes.size(), 1u);
    return volumes.empty() ? Volume() : volumes.front();
  }
  const TempTree& Tree() const { return tree_; }

 private:
  TempTree tree_;
  VolumeSources sources_;
  std::map<std::string, std::string> properties_;
  std::string table_;
  int id_ = 20;
};

TEST(ListVolumes, SkipsSystemMounts) {
  Machine machine;
  machine.Mount("0:21", "/", "/proc", "proc", "proc")
      .Mount("0:6", "/", "/dev", "devtmpfs", "devtmpfs")
      .Mount("0:23", "/", "/dev/shm", "tmpfs", "tmpfs")
      .Mount("0:24", "/", "/run", "tmpfs", "tmpfs")
      .Mount("0:25", "/", "/run/user/1000", "tmpfs", "tmpfs")
      .Mount("0:26", "/", "/run/user/1000/doc", "fuse.portal", "portal")
      .Mount("8:1", "/", "/", "ext4", "/dev/sda1")
      .Mount("8:2", "/", "/boot/efi", "vfat", "/dev/sda2")
      .Mount("7:1", "/", "/snap/core/1", "squashfs", "/dev/loop1")
      .Mount("7:2", "/", "/media/image", "squashfs", "/dev/loop2")
      .Mount("0:40", "/", "/var/lib/docker/overlay2/x/merged", "overlay", "overlay")
      .Mount("8:3", "/", "/home/u/.cache/box", "ext4", "/dev/sda3")
      .Mount("0:41", "/", "/misc", "autofs", "/etc/auto.misc")
      .Mount("8:17", "/", "/run/media/u/CARD", "vfat", "/dev/sdb1")
      .Mount("8:4", "/", "/home", "ext4", "/dev/sda4")
      .Mount("0:42", "/", "/scratch", "tmpfs", "tmpfs");
  for (const auto device : {"8:1", "8:2", "8:3", "8:4", "8:17", "7:1", "7:2"}) {
    machine.Device(device, std::string("virtual/block/") + device, "0\n");
  }
  EXPECT_THAT(machine.MountPoints(), ElementsAre("/", "/run/media/u/CARD", "/home", "/scratch"));
}

TEST(ListVolumes, SkipsDuplicateMounts) {
  Machine machine;
  machine.Mount("8:1", "/", "/", "ext4", "/dev/sda1")
      .Mount("8:1", "/srv/cards", "/cards", "ext4", "/dev/sda1")  // bind mount of a folder in "/"
      .Mount("8:5", "/a", "/one", "ext4", "/dev/sda5")            // neither of the two contains
      .Mount("8:5", "/b", "/two", "ext4", "/dev/sda5")            // the other
      .Mount("8:5", "/ab", "/three", "ext4", "/dev/sda5")
      .Mount("8:5", "/a/in", "/four", "ext4", "/dev/sda5")
      .Mount("8:6", "/", "/again", "ext4", "/dev/sda6")
      .Mount("8:6", "/", "/later", "ext4", "/dev/sda6")
      .Mount("8:7", "/", "/top", "ext4", "/dev/sda7")
      .Mount("8:8", "/", "/top", "xfs", "/dev/sda8");  // covers the previous one
  for (const auto device : {"8:1", "8:5", "8:6", "8:7", "8:8"}) {
    machine.Device(device, std::string("virtual/block/") + device, "0\n");
  }
  EXPECT_THAT(machine.MountPoints(), ElementsAre("/", "/one", "/two", "/three", "/again", "/top"));
}

TEST(ListVolumes, SkipsMountsOnFilesAndMissingMountPoints) {
  Machine machine;
  machine.Mount("8:1", "/", "/", "ext4", "/dev/sda1").Device("8:1", "disk/sda/sda1", "");
  machine.MountOnly("8:5", "/hosts", "/data/hosts", "ext4", "/dev/sdb1")
      .MountOnly("8:5", "/", "/data/missing", "ext4", "/dev/sdb1")
      .Device("8:5", "disk/sdb/sdb1", "");
  machine.Tree().File("root/data/hosts", "127.0.0.1 localhost");
  EXPECT_THAT(machine.MountPoints(), ElementsAre("/"));
}

TEST(ListVolumes, SkipsDevicesWithoutMedium) {
  Machine machine;
  machine
      .MountOnly("8:1", "/", "/", "ext4", "/dev/sda1")  // "/" is always listed
      .Mount("8:17", "/", "/media/pulled", "vfat", "/dev/sdb1")
      .Mount("8:33", "/", "/media/empty", "vfat", "/dev/sdc1")
      .Mount("8:49", "/", "/media/full", "vfat", "/dev/sdd1")
      .Device("8:33", "usb/sdc/sdc1", "", "0\n")
      .Device("8:49", "usb/sdd/sdd1", "", "42\n");
  EXPECT_THAT(machine.MountPoints(), ElementsAre("/", "/media/full"));
}

struct KindCase {
  const char* why;
  const char* device;
  const char* folder;  // of the device below /sys/devices; empty if none
  const char* diskRemovable;
  const char* type;
  const char* source;
  VolumeKind kind;
};
class VolumeKinds : public testing::TestWithParam<KindCase> {};

TEST_P(VolumeKinds, DependOnDeviceAndType) {
  const KindCase& c = GetParam();
  Machine machine;
  machine.Mount(c.device, "/", "/volume", c.type, c.source);
  machine.Tree().Folder("root/disk.img");
  if (*c.folder != '\0') {
    machine.Device(c.device, c.folder, "");
    const auto disk = fs::path(c.folder).parent_path().string();
    machine.Tree().File("sys/devices/" + disk + "/removable", c.diskRemovable);
    machine.Tree().Folder("sys/bus/mmc");
    if (disk.find("mmcblk") != disk.npos) {
      fs::create_symlink(machine.Tree().Path("sys/bus/mmc"),
                         machine.Tree().Path("sys/devices/" + disk + "/../subsystem"));
    }
  }
  EXPECT_EQ(machine.Only().kind, c.kind) << c.why;
}

INSTANTIATE_TEST_SUITE_P(
    Table, VolumeKinds,
    testing::Values(
        KindCase{"disk", "8:1", "pci/sda/sda1", "0\n", "ext4", "/dev/sda1", VolumeKind::kFixed},
        KindCase{"partition of a removable disk", "8:17", "pci/usb1/sdb/sdb1", "1\n", "vfat",
                 "/dev/sdb1", VolumeKind::kRemovable},
        KindCase{"reader on an MMC bus", "179:1", "pci/mmc0/card/mmcblk0/mmcblk0p1", "0\n", "exfat",
                 "/dev/mmcblk0p1", VolumeKind::kRemovable},
        KindCase{"optical", "11:0", "pci/ata/sr0/x", "1\n", "iso9660", "/dev/sr0",
                 VolumeKind::kOptical},
        KindCase{"RAM disk device", "1:0", "virtual/ram0/x", "0\n", "ext4", "/dev/ram0",
                 VolumeKind::kRAMDisk},
        KindCase{"tmpfs", "0:50", "", "", "tmpfs", "none", VolumeKind::kRAMDisk},
        KindCase{"fuse on a local image", "0:51", "", "", "fuse", "/disk.img", VolumeKind::kFixed},
        KindCase{"fuse without a local source", "0:51", "", "", "fuse", "other",
                 VolumeKind::kUnknown},
        KindCase{"unknown fuse type", "0:52", "", "", "fuse.other", "x", VolumeKind::kUnknown}));

TEST(ListVolumes, ReadsLabelsFromUdevAndMountPoint) {
  Machine machine;
  machine.Mount("8:17", "/", "/media/u/CARD", "vfat", "/dev/sdb1")
      .Mount("8:18", "/", "/media/u/OTHER", "vfat", "/dev/sdb2")
      .Mount("8:19", "/", "/media/u/8A3F-1C2D", "vfat", "/dev/sdb3")
      .Mount("8:20", "/", "/mnt/plain", "ext4", "/dev/sdb4")
      .Property("8:17", "ID_FS_LABEL_ENC", "MY\\x20DATA\\x")
      .Property("8:19", "ID_FS_UUID", "8A3F-1C2D");
  for (const auto device : {"8:17", "8:18", "8:19", "8:20"}) {
    machine.Device(device, std::string("usb/sdb/p") + device, "");
  }
  std::map<std::string, std::string> labels;
  for (const Volume& volume : machine.List()) labels[volume.mountPoint] = volume.label;
  EXPECT_EQ(labels["/media/u/CARD"], "MY DATA\\x");
  EXPECT_EQ(labels["/media/u/OTHER"], "OTHER");
  EXPECT_EQ(labels["/media/u/8A3F-1C2D"], "");  // a serial number is no label
  EXPECT_EQ(labels["/mnt/plain"], "");
}

TEST(ListVolumes, DoesNotAccessNetworkMounts) {
  Machine machine;
  // None of these folders exists; a check on disk would omit them.
  machine.MountOnly("0:60", "/", "/mnt/nas", "cifs", "//server/share")
      .MountOnly("0:61", "/", "/mnt/with\\040blank", "nfs4", "host:/export/a")
      .MountOnly("0:62", "/", "/mnt/ssh", "fuse.sshfs", "me@host:/x")
      .MountOnly("0:63", "/", "/usr/lib/wsl", "9p", "drivers")
      .MountOnly("7:0", "/", "/mnt/nas/inner", "ext4", "/dev/loop0")
      .Mount("8:1", "/", "/", "ext4", "/dev/sda1")
      .Device("8:1", "pci/sda/sda1", "")
      .Device("7:0", "virtual/block/loop0", "0\n");
  machine.Tree().File("root/etc-hosts");
  machine.MountOnly("0:64", "/hosts", "/etc-hosts", "virtiofs", "tag");
  const auto volumes = machine.List();
  std::vector<std::string> texts;
  for (const Volume& v : volumes) texts.push_back(v.mountPoint + "|" + v.remoteName);
  EXPECT_THAT(texts, ElementsAre("/mnt/nas/inner|", "/|", "/mnt/nas|//server/share",
                                 "/mnt/with blank|host:/export/a", "/mnt/ssh|me@host:/x"));
  EXPECT_EQ(volumes[2].kind, VolumeKind::kRemote);
  EXPECT_TRUE(volumes[2].isNetwork);
}

TEST(ListVolumes, ListsSharesOfDesktopSession) {
  Machine machine;
  const std::string own = "rw,user_id=" + std::to_string(getuid()) + ",group_id=0";
  machine.Mount("0:70", "/", "/run/user/7/gvfs", "fuse.gvfsd-fuse", "gvfsd-fuse", own)
      .Mount("0:71", "/", "/run/user/8/gvfs", "fuse.gvfsd-fuse", "gvfsd-fuse", "rw,user_id=54321");
  machine.Tree().Folder("root/run/user/7/gvfs/smb-share:server=nas,share=cards");
  machine.Tree().Folder("root/run/user/8/gvfs/smb-share:server=not,share=ours");
  const Volume share = machine.Only();
  EXPECT_EQ(share.mountPoint, "/run/user/7/gvfs/smb-share:server=nas,share=cards");
  EXPECT_EQ(share.remoteName, "smb://nas/cards");
  EXPECT_FALSE(share.hasLocalName);

  EXPECT_EQ(UrlOfGvfsShare("sftp:host=h,user=me,port=22"), "sftp://me@h:22");
  EXPECT_EQ(UrlOfGvfsShare("dav:host=h,ssl=true,prefix=%2Fa%2fb"), "davs://h/a/b");
  EXPECT_EQ(UrlOfGvfsShare("smb-share:share=only"), "smb-share:share=only");
  EXPECT_EQ(UrlOfGvfsShare("other form"), "other form");
}

TEST(MountTable, SurvivesMalformedTables) {
  TempTree tree;
  EXPECT_THAT(MountTable::Read(tree.Path("missing")).Mounts(), IsEmpty());
  for (const char* text :
       {"", "\n\n", "x", "1 2 3", "22 27 0:21 / /a rw - ", "a b c d e f g h i\n"}) {
    const auto table = MountTable::Read(tree.File("table", text));
    EXPECT_EQ(table.Mounts().size(), MountTable::Parse(text).Mounts().size()) << text;
    ListVolumes(VolumeSources(), table);
  }
}

TEST(MountTable, DetectsNetworkFileSystems) {
  std::istringstream types(
      "9p afp afs beegfs ceph cifs coda davfs davfs2 glusterfs lustre ncpfs nfs nfs4 orangefs smb3 "
      "smbfs virtiofs fuse.afp fuse.ceph fuse.cephfs fuse.curlftpfs fuse.dav fuse.davfs "
      "fuse.davfs2 fuse.gcsfuse fuse.gvfsd-fuse fuse.glusterfs fuse.goofys fuse.httpfs "
      "fuse.juicefs fuse.mfs fuse.rclone fuse.s3fs fuse.seaweedfs fuse.smbnetfs fuse.sshfs "
      "fuse.wdfs");
  for (std::string type; types >> type;) EXPECT_TRUE(IsNetworkType(type)) << type;
  for (const char* type : {"", "ext4", "fuse.portal", "fuseblk"}) EXPECT_FALSE(IsNetworkType(type));
}

TEST(MountTable, AddsRootInChroot) {
  const auto table = MountTable::Parse("1 0 8:1 /bare/home /home rw - ext4 /dev/sda1 rw\n");
  ASSERT_EQ(table.At("/"), nullptr);
  ASSERT_NE(table.WithRoot().At("/"), nullptr);
  EXPECT_EQ(table.WithRoot().Mounts().size(), 2u);
  EXPECT_EQ(table.WithRoot().WithRoot().Mounts().size(), 2u);
}

TEST(MountTable, ComparesCompletePathComponents) {
  const auto table = MountTable::Parse(
      "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:60 / /mnt/nas rw - nfs h:/e rw\n");
  EXPECT_TRUE(table.LeadsToNetwork("/mnt/nas"));
  EXPECT_TRUE(table.LeadsToNetwork("/mnt/nas/a"));
  EXPECT_FALSE(table.LeadsToNetwork("/mnt/nasty"));
  EXPECT_FALSE(table.LeadsToNetwork("/mnt"));
  // The files of a machine with its root on a share stay accessible.
  EXPECT_FALSE(MountTable::Parse("1 0 0:9 / / rw - 9p root rw\n").LeadsToNetwork("/a"));
}

TEST(RunningSystem, ListsRootAndNewMount) {
  using namespace Sorvik::foundation;
  const auto volumes = ListVolumes();
  EXPECT_TRUE(std::any_of(volumes.begin(), volumes.end(),
                          [](const Volume& volume) { return volume.mountPoint == "/"; }));
  EXPECT_TRUE(IsMountPoint("/"));

  TempTree tree;
  const std::string folder = tree.Folder("ram");
  EXPECT_FALSE(IsMountPoint(folder));
  const RealMount mount = RealMount::Memory(folder);
  if (!mount) GTEST_SKIP() << "mounting isn't allowed here";
  EXPECT_TRUE(IsMountPoint(folder));
  fs::create_directory_symlink(tree.Root(), tree.Path("link"));
  EXPECT_TRUE(IsMountPoint(tree.Path("link/ram")));
  const auto now = ListVolumes();
  const auto found = std::find_if(
      now.begin(), now.end(), [&](const Volume& volume) { return volume.mountPoint == folder; });
  ASSERT_NE(found, now.end());
  EXPECT_EQ(found->kind, VolumeKind::kRAMDisk);
}

TEST(RunningSystem, SkipsMountsOnFiles) {
  using namespace Sorvik::foundation;
  TempTree tree;
  const std::string file = tree.File("etc-hosts");
  const RealMount disk = RealMount::Memory(tree.Folder("ram"));
  tree.File("ram/hosts", "127.0.0.1 localhost");
  const RealMount mount = RealMount::Bind(tree.Path("ram/hosts"), file);
  if (!disk || !mount) GTEST_SKIP() << "mounting isn't allowed here";
  EXPECT_TRUE(IsMountPoint(file));
  for (const Volume& volume : ListVolumes()) EXPECT_NE(volume.mountPoint, file);
}

TEST(RunningSystem, ReadsFileSystemLabel) {
  TempTree tree;
  const std::string folder = tree.Folder("disk");
  const RealMount mount = RealMount::Image(tree.Path("image"), "MY DATA", folder);
  if (!mount) GTEST_SKIP() << "no loop mount of an ext4 image can be made here";
  const auto volumes = Sorvik::foundation::ListVolumes();
  const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const Volume& volume) {
    return volume.mountPoint == folder;
  });
  ASSERT_NE(found, volumes.end());
  EXPECT_EQ(found->label, "MY DATA");
  EXPECT_EQ(found->kind, VolumeKind::kFixed);
}

TEST(RunningSystem, ReadsMountTableAgainOnlyAfterAChange) {
  const auto before = MountTable::Current();
  EXPECT_EQ(MountTable::Current(), before);
  TempTree tree;
  RealMount mount = RealMount::Memory(tree.Folder("ram"));
  if (!mount) GTEST_SKIP() << "mounting isn't allowed here";
  EXPECT_EQ(before->At(tree.Path("ram")), nullptr);
  EXPECT_NE(MountTable::Current()->At(tree.Path("ram")), nullptr);
  mount.End();
  EXPECT_EQ(MountTable::Current()->At(tree.Path("ram")), nullptr);
}

TEST(RunningSystem, SkipsMountsCoveredByALaterMount) {
  TempTree tree;
  const RealMount inner = RealMount::Memory(tree.Folder("disk/inner"));
  const RealMount outer = RealMount::Memory(tree.Path("disk"));
  if (!inner || !outer) GTEST_SKIP() << "mounting isn't allowed here";
  // The path exists again, but it isn't the mount point of the first mount.
  tree.Folder("disk/inner");
  const MountTable table = MountTable::Read(kKernelMountTable);
  EXPECT_NE(table.At(tree.Path("disk")), nullptr);
  EXPECT_EQ(table.At(tree.Path("disk/inner")), nullptr);
  for (const Volume& volume : Sorvik::foundation::ListVolumes()) {
    EXPECT_NE(volume.mountPoint, tree.Path("disk/inner"));
  }
}

TEST(MountTable, SkipsMountsBelowACoveredMount) {
  const auto table = MountTable::Parse(
      "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n"
      "2 1 0:60 / /mnt/a/b rw - nfs h:/e rw\n"
      "3 2 8:2 / /mnt/a/b/c rw - ext4 /dev/sdb1 rw\n"
      "4 1 8:3 / /mnt/a rw - ext4 /dev/sdc1 rw\n"
      "5 4 8:4 / /mnt/a/d rw - ext4 /dev/sdd1 rw\n");
  std::vector<std::string> mountPoints;
  for (const auto& mount : table.Mounts()) mountPoints.push_back(mount.mountPoint);
  EXPECT_THAT(mountPoints, ElementsAre("/", "/mnt/a", "/mnt/a/d"));
  EXPECT_FALSE(table.HasNetworkMounts());
}

}  // namespace
