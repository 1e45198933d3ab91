// SPDX-License-Identifier: MIT
// Made WAV files of sound recorders.
#pragma once

#include <string>

#include "support/Bytes.h"

namespace sorvik_test {

inline Bytes RiffChunk(const std::string& id, const Bytes& data) {
  Bytes chunk;
  chunk.Text(id).U32LE(data.size()).Add(data);
  return data.size() % 2 == 0 ? chunk : chunk.U8(0);
}

struct Recording {
  std::string ixml = {};    // the contents of BWFXML; empty: no such chunk
  std::uint64_t start = 0;  // samples since midnight
  std::string date = "2021-03-04";
  std::string originator = "Recorder";
  std::string description = {};
  std::uint32_t samples = 100;
  unsigned channels = 1;
  bool bext = true;
  bool ixmlLast = false;       // after the sound
  unsigned paddingBefore = 0;  // bytes of a chunk of no meaning
};

inline Bytes BextChunk(const Recording& recording) {
  Bytes b;
  b.Text(recording.description).PadTo(256).Text(recording.originator).PadTo(320);
  b.Text(recording.date).PadTo(330).Text("05:06:07").PadTo(338);
  b.U32LE(static_cast<std::uint32_t>(recording.start));
  b.U32LE(static_cast<std::uint32_t>(recording.start >> 32)).PadTo(602);
  return RiffChunk("bext", b);
}

// 48 kHz, 16 bits.
inline std::string MadeRecording(const Recording& recording) {
  const unsigned block = 2 * recording.channels;
  Bytes body("WAVE");
  const Bytes ixml =
      recording.ixml.empty()
          ? Bytes()
          : RiffChunk("iXML", Bytes("<?xml version=\"1.0\" encoding=\"UTF-8\"?><BWFXML>" +
                                    recording.ixml + "</BWFXML>"));
  if (recording.paddingBefore != 0) {
    body.Add(RiffChunk("JUNK", Bytes().Fill(recording.paddingBefore)));
  }
  if (recording.bext) body.Add(BextChunk(recording));
  if (!recording.ixmlLast) body.Add(ixml);
  Bytes format;
  format.U16LE(1).U16LE(recording.channels).U32LE(48000).U32LE(48000 * block);
  body.Add(RiffChunk("fmt ", format.U16LE(block).U16LE(16)));
  body.Add(RiffChunk("data", Bytes().Fill(recording.samples * block)));
  if (recording.ixmlLast) body.Add(ixml);
  return RiffChunk("RIFF", body).str();
}

// iXML of one of the files of a take.
inline std::string FamilyXml(const std::string& uid, const std::string& index = {},
                             unsigned total = 0, const std::string& more = {}) {
  return more + "<FILE_SET><TOTAL_FILES>" + std::to_string(total) + "</TOTAL_FILES><FAMILY_UID>" +
         uid + "</FAMILY_UID><FAMILY_NAME>Name of " + uid + "</FAMILY_NAME><FILE_SET_INDEX>" +
         index + "</FILE_SET_INDEX></FILE_SET>";
}

}  // namespace sorvik_test
