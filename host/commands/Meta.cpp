// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Commands.h"
#include "Failure.h"
#include "Fields.h"
#include "Json.h"
#include "Paths.h"
#include "SorvikProvider/metadata/XMPSupport.h"

namespace host {
namespace {

using Sorvik::FieldNameList;
using Sorvik::FieldNameSet;
using Sorvik::FieldValueMap;
namespace XMPSupport = Sorvik::XMPSupport;

constexpr std::size_t kMaxPacketBytes = 64U << 20;

std::string ReadStandardInput(const std::atomic<bool>& stop) {
  std::string packet;
  std::string chunk(1 << 16, '\0');
  while (!stop) {
    const ssize_t got = read(STDIN_FILENO, chunk.data(), chunk.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      throw Failure(kFailed,
                    std::string("standard input: cannot read (") + std::strerror(errno) + ")");
    }
    if (got == 0) break;
    packet.append(chunk, 0, static_cast<std::size_t>(got));
    if (packet.size() > kMaxPacketBytes)
      throw Failure(kFailed, "standard input: XMP packet too large");
  }
  return packet;
}

FieldNameList TableFields() {
  FieldNameList fields;
  for (const XMPSupport::XMPCrossReference& row : XMPSupport::kXMPCrossReference) {
    fields.emplace_back(row.propertyName);
  }
  return fields;
}

void WriteJson(Output& output, const std::string& path, const FieldValueMap& fields) {
  JsonWriter json(output);
  json.BeginObject();
  json.Key("path");
  json.String(path);
  json.Key("fields");
  json.Fields(fields);
  json.EndObject();
}

// `file` is empty for an XMP packet on standard input.
void RunOne(Context& context, const std::string& file, const FieldNameList& wanted) {
  const bool packet = file.empty();
  const std::string path = packet ? "-" : ResolvePath(file);
  const auto bits = XMPSupport::ParseFields(FieldNameSet(wanted.begin(), wanted.end()));
  const auto& stop = context.session.Stopped();
  context.session.GetProgress().Begin("reading");
  const auto fields = context.session.OnWorker<FieldValueMap>([packet, path, bits, &stop] {
    return packet ? XMPSupport::MakeValue(bits, ReadStandardInput(stop))
                  : XMPSupport::MakeValue(path, bits);
  });
  if (fields.empty()) {
    if (packet) throw Failure(kFailed, "standard input: no metadata");
    throw Failure(kFailed, path, context.session.OnWorker<std::string>([path] {
      return DescribePathError(path, "no metadata");
    }));
  }
  if (context.options.json) {
    WriteJson(context.output, path, fields);
  } else {
    WriteFieldLines(context.output, {}, wanted, fields);
  }
}

}  // namespace

int RunMeta(Context& context) {
  const Options& options = context.options;
  const FieldNameList wanted = options.fields ? ResolveFields(*options.fields, {}) : TableFields();
  if (options.packet) {
    RunOne(context, {}, wanted);
    return kDone;
  }
  return ForEachOperand(context, options.operands, [&](const std::string& file) {
    if (file.empty()) throw Failure(kUsageError, "FILE must not be empty (try 'sorvik --help')");
    RunOne(context, file, wanted);
  });
}

}  // namespace host
