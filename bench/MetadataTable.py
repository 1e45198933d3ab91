#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the metadata of this library with other programs, per kind of file.

  bench/MetadataTable.py build/release/sorvik FOLDER... [--wrong] [--empty]

Needs exiftool, mediainfo and ffprobe. A value counts if at least two of these programs agree on it. The table has
the number of such values that `sorvik meta` gives right, wrong and not at all, and the number of filled fields
of each program, for each extension of file names. --wrong and --empty list the values, too.
"""
import argparse
import collections
import json
import os
import re
import subprocess
import sys

BATCH = 50
SECONDS = 120

CODECS = {
    "avc": "avc", "h264": "avc", "avc1": "avc", "avc-intra 50": "avc", "avc-intra 100": "avc", "avc-intra 200": "avc",
    "hevc": "hevc", "hvc1": "hevc", "hev1": "hevc", "av1": "av1", "av01": "av1", "vp8": "vp8", "vp08": "vp8",
    "vp9": "vp9", "vp09": "vp9", "vvc": "vvc", "prores": "prores", "apch": "prores", "apcn": "prores",
    "apcs": "prores", "apco": "prores", "ap4h": "prores", "ap4x": "prores", "mpeg-1": "mpeg1", "mpeg1video": "mpeg1",
    "mpeg-2": "mpeg2", "mpeg2video": "mpeg2", "mpeg video": "mpeg2", "imx": "mpeg2", "m2v1": "mpeg2", "mpeg-4": "mpeg4",
    "mpeg-4 visual": "mpeg4", "mpeg4": "mpeg4", "mp4v": "mpeg4", "mp42": "msmpeg4", "msmpeg4v2": "msmpeg4",
    "dv": "dv", "dvvideo": "dv", "dvcpro 50": "dv", "dvcpro hd": "dv", "motion jpeg": "jpeg", "mjpeg": "jpeg",
    "jpeg": "jpeg", "mjpg": "jpeg", "jpeg 2000": "jpeg2000", "jpeg2000": "jpeg2000", "vc-3": "vc3", "dnxhd": "vc3",
    "vc-5": "vc5", "cineform": "vc5", "cfhd": "vc5", "h.263": "h263", "h263": "h263", "uncompressed": "raw",
    "rawvideo": "raw", "v210": "raw", "yuv": "raw", "rgb": "raw", "ffv1": "ffv1", "theora": "theora", "huffyuv": "huffyuv", "hfyu": "huffyuv",
    "prores raw": "prores raw", "prores_raw": "prores raw", "aprn": "prores raw", "aprh": "prores raw",
}
SOUND = {
    "pcm": "pcm", "aac": "aac", "mp4a": "aac", "ac-3": "ac3", "ac3": "ac3", "e-ac-3": "eac3", "e-ac3": "eac3",
    "eac3": "eac3", "mpeg audio": "mpeg", "mpeg": "mpeg", "mp2": "mpeg", "mp3": "mpeg", "opus": "opus",
    "vorbis": "vorbis", "flac": "flac", "alac": "alac", "amr": "amr", "amr_nb": "amr", "amr_wb": "amr",
    "mu-law": "mulaw", "pcm_mulaw": "mulaw", "a-law": "alaw", "pcm_alaw": "alaw", "adpcm": "adpcm", "dts": "dts",
}


def number(text):
    """The number at the start of a text, or a fraction; None if there is none."""
    match = re.match(r"\s*(-?\d+(?:\.\d+)?)(?:\s*[/:]\s*(\d+(?:\.\d+)?))?", str(text))
    if not match:
        return None
    value = float(match[1])
    if match[2]:
        return value / float(match[2]) if float(match[2]) else None
    return value


def date(text):
    """The date and time without fraction and time zone; None if it isn't one."""
    match = re.match(r"(?:UTC )?(\d{4})[-:](\d\d)[-:](\d\d)[T ](\d\d):(\d\d):(\d\d)", str(text))
    if not match or match[1] < "1905":
        return None
    return "%s-%s-%s %s:%s:%s" % match.groups()


def name(text, table):
    text = str(text).lower()
    if text.startswith("pcm_") and text not in table:
        return "pcm"
    return table.get(text) or (table.get(text.split(" / ")[0]) if text else None)


def angle(text):
    """Degrees of "48,12.49200N" or a number."""
    match = re.match(r"(\d+),(\d+(?:\.\d+)?)([NSEW])$", str(text))
    if not match:
        return number(text)
    value = int(match[1]) + float(match[2]) / 60
    return -value if match[3] in "SW" else value


def text_of(value):
    text = " ".join(str(value).split()).strip().lower()
    return text or None


def put(values, field, value):
    if value is not None and value != "" and field not in values:
        values[field] = value


def size(width, height, turned=False):
    width, height = number(width or 0), number(height or 0)
    if not width or not height:
        return None
    return "%dx%d" % ((height, width) if turned else (width, height))


# Fields with a tolerance; the others must be equal.
def close(field, a, b):
    if field in ("latitude", "longitude"):
        return abs(a - b) < 1e-4
    if field == "duration":
        return abs(a - b) < max(0.06, 0.002 * b)
    if field in ("rate", "altitude"):
        return abs(a - b) <= 0.002 * abs(b) + 1e-6
    if field == "aspect":
        return abs(a - b) <= 0.03 * b  # both conventions for standard definition, such as 12/11 and 16/15
    if field in ("make", "model", "software", "artist"):
        return a == b or a in b or b in a
    return a == b


def is_turned(tags):
    """Whether a photograph is shown with width and height exchanged; HEIF ignores the orientation of Exif."""
    if not tags.get("MIMEType", "").startswith("image"):
        return False
    if tags["MIMEType"] in ("image/heic", "image/heif", "image/avif"):
        return str(tags.get("Rotation", 0)) in ("90", "270")
    return str(tags.get("Orientation", 1)) in ("5", "6", "7", "8")


def of_exiftool(tags):
    values = {}
    turned = is_turned(tags)
    put(values, "size", size(tags.get("ImageWidth"), tags.get("ImageHeight"), turned))
    put(values, "rate", number(tags.get("VideoFrameRate", tags.get("FrameRate", ""))) or None)
    duration = tags.get("Duration")
    if isinstance(duration, str) and re.match(r"\d+:\d\d:\d\d", duration):
        hours, minutes, seconds = duration.split(":")
        duration = int(hours) * 3600 + int(minutes) * 60 + float(seconds)
    put(values, "duration", number(duration) if duration else None)
    aspect = number(tags.get("PixelAspectRatio", ""))
    put(values, "aspect", aspect)
    put(values, "codec", name(tags.get("CompressorID", tags.get("VideoCodecID", "")), CODECS))
    put(values, "channels", number(tags.get("AudioChannels", tags.get("NumChannels", ""))))
    put(values, "samplerate", number(tags.get("AudioSampleRate", tags.get("SampleRate", ""))))
    put(values, "sound", name(tags.get("AudioFormat", ""), SOUND))
    for tag in ("DateTimeOriginal", "CreationDate", "CreateDate", "DateCreated"):
        put(values, "date", date(tags.get(tag, "")))
    put(values, "make", text_of(tags.get("Make", tags.get("DeviceManufacturer", ""))))
    put(values, "model", text_of(tags.get("Model", tags.get("DeviceModelName", ""))))
    put(values, "serial", text_of(tags.get("SerialNumber", tags.get("DeviceSerialNo", ""))))
    put(values, "title", text_of(tags.get("Title", "")))
    put(values, "artist", text_of(tags.get("Artist", tags.get("Author", ""))))
    put(values, "copyright", text_of(tags.get("Copyright", "")))
    put(values, "timecode", text_of(str(tags.get("StartTimecode", tags.get("TimeCode", ""))).replace(";", ":")))
    put(values, "latitude", angle(tags.get("GPSLatitude", "")))
    put(values, "longitude", angle(tags.get("GPSLongitude", "")))
    put(values, "altitude", number(tags.get("GPSAltitude", "")))
    return values


def of_mediainfo(document):
    values = {}
    tracks = ((document or {}).get("media") or {}).get("track") or []
    kinds = collections.defaultdict(list)
    for track in tracks:
        kinds[track.get("@type")].append(track)
    general = (kinds["General"] or [{}])[0]
    video = (kinds["Video"] or kinds["Image"] or [{}])[0]
    still = not kinds["Video"]
    sound = (kinds["Audio"] or [{}])[0]
    put(values, "size", size(video.get("Width"), video.get("Height")))
    put(values, "depth", number(video.get("BitDepth", "")))
    put(values, "codec", name(video.get("Format", ""), CODECS))
    if video.get("Format") == "MPEG Video" and video.get("Format_Version") == "1":
        values["codec"] = "mpeg1"
    if not still:
        put(values, "rate", number(video.get("FrameRate", "")))
        put(values, "aspect", number(video.get("PixelAspectRatio", "")))
        put(values, "order", {"TFF": "upper", "BFF": "lower"}.get(
            video.get("ScanOrder", ""), "progressive" if video.get("ScanType") == "Progressive" else None))
        put(values, "space", {"BT.709": "709", "BT.2020": "2020", "BT.601 NTSC": "601", "BT.601 PAL": "601"}.get(
            video.get("colour_primaries", "")))
    put(values, "duration", number(video.get("Duration", general.get("Duration", ""))))
    if sound:
        put(values, "sound", name(sound.get("Format", ""), SOUND))
        put(values, "samplerate", number(sound.get("SamplingRate", "")))
        channels = [number(track.get("Channels", "")) or 0 for track in kinds["Audio"]]
        if all(count == 1 for count in channels):
            put(values, "channels", float(len(channels)))
        put(values, "channels", channels[0] or None)
        if values.get("sound") == "pcm":
            put(values, "samplebits", number(sound.get("BitDepth", "")))
    for tag in ("Recorded_Date", "Mastered_Date", "Encoded_Date"):
        put(values, "date", date(general.get(tag, "")))
    put(values, "title", text_of(general.get("Title", "")))
    put(values, "artist", text_of(general.get("Performer", "")))
    put(values, "copyright", text_of(general.get("Copyright", "")))
    for track in kinds["Other"]:
        put(values, "timecode", text_of(str(track.get("TimeCode_FirstFrame", "")).replace(";", ":")))
    put(values, "timecode", text_of(str(video.get("TimeCode_FirstFrame", "")).replace(";", ":")))
    extra = general.get("extra") or {}
    put(values, "make", text_of(extra.get("com_apple_quicktime_make", general.get("Encoded_Hardware_CompanyName", ""))))
    put(values, "model", text_of(extra.get("com_apple_quicktime_model", general.get("Encoded_Hardware_Name", ""))))
    return values


def of_ffprobe(document):
    values = {}
    streams = document.get("streams") or []
    container = document.get("format") or {}
    pictures = [s for s in streams if s.get("codec_type") == "video" and not s["disposition"].get("attached_pic")]
    video = (pictures or [{}])[0]
    sounds = [s for s in streams if s.get("codec_type") == "audio"]
    still = re.search(r"image2|_pipe|gif|ico", container.get("format_name", "")) is not None
    put(values, "size", size(video.get("width"), video.get("height")))
    put(values, "codec", name(video.get("codec_name", ""), CODECS))
    if not still:
        for key in ("avg_frame_rate", "r_frame_rate"):
            put(values, "rate", number(video.get(key, "")) or None)
        put(values, "aspect", number(video.get("sample_aspect_ratio", "")) or None)
        put(values, "order", {"progressive": "progressive", "tt": "upper", "tb": "upper", "bb": "lower",
                              "bt": "lower"}.get(video.get("field_order", "")))
        put(values, "space", {"bt709": "709", "bt2020": "2020", "smpte170m": "601", "bt470bg": "601"}.get(
            video.get("color_primaries", "")))
        put(values, "duration", number(video.get("duration", container.get("duration", ""))))
    put(values, "depth", number(video.get("bits_per_raw_sample", "")) or None)
    match = re.search(r"p(\d\d)[lb]e$", video.get("pix_fmt", ""))
    if video.get("pix_fmt"):
        put(values, "depth", float(match[1]) if match else 8.0)
    if sounds:
        put(values, "sound", name(sounds[0].get("codec_name", ""), SOUND))
        put(values, "samplerate", number(sounds[0].get("sample_rate", "")))
        counts = [s.get("channels", 0) for s in sounds]
        put(values, "channels", float(len(counts) if all(c == 1 for c in counts) else counts[0]))
        if values.get("sound") == "pcm":
            put(values, "samplebits", number(sounds[0].get("bits_per_raw_sample") or sounds[0].get("bits_per_sample")))
    tags = {k.lower(): v for k, v in (container.get("tags") or {}).items()}
    for tag in ("com.apple.quicktime.creationdate", "creation_time", "date"):
        put(values, "date", date(tags.get(tag, "")))
    put(values, "title", text_of(tags.get("title", "")))
    put(values, "artist", text_of(tags.get("artist", "")))
    put(values, "copyright", text_of(tags.get("copyright", "")))
    put(values, "make", text_of(tags.get("com.apple.quicktime.make", tags.get("make", ""))))
    put(values, "model", text_of(tags.get("com.apple.quicktime.model", tags.get("model", ""))))
    for holder in [tags] + [{k.lower(): v for k, v in (s.get("tags") or {}).items()} for s in streams]:
        put(values, "timecode", text_of(str(holder.get("timecode", "")).replace(";", ":")))
        place = re.match(r"([+-]\d+\.\d+)([+-]\d+\.\d+)", holder.get("location", ""))
        if place:
            put(values, "latitude", float(place[1]))
            put(values, "longitude", float(place[2]))
    return values


CHANNELS = {"Mono": 1.0, "Stereo": 2.0, "5.1": 6.0, "7.1": 8.0, "16 Channel": 16.0}


def of_sorvik(fields):
    values = {}
    match = re.match(r"(\d+) x (\d+)", fields.get("videoFrameSize", ""))
    if match:
        values["size"] = "%sx%s" % match.groups()
    put(values, "rate", number(fields.get("videoFrameRate", "")))
    match = re.match(r"(\d+) @ (\d+)/(\d+)", fields.get("frameCount", ""))
    if match:
        put(values, "duration", int(match[1]) * int(match[2]) / int(match[3]))
    put(values, "aspect", number(fields.get("videoPixelAspectRatio", "")))
    depth = fields.get("videoPixelDepth", "")
    put(values, "depth", "other" if depth == "Other" else number(depth))
    put(values, "order", text_of(fields.get("videoFieldOrder", "")))
    put(values, "space", {"CCIR-709": "709", "CCIR-601": "601", "BT.2020": "2020"}.get(fields.get("videoColorSpace", "")))
    codec = fields.get("videoCompressor", "")
    codec = re.sub(r"^ProRes(?! RAW).*", "ProRes", codec)
    put(values, "codec", name(re.sub(r"^ProRes RAW.*", "ProRes RAW", codec), CODECS))
    put(values, "sound", name(fields.get("audioCompressor", ""), SOUND))
    put(values, "samplerate", number(fields.get("audioSampleRate", "")))
    channels = fields.get("audioChannelType", "")
    put(values, "channels", CHANNELS.get(channels, "other" if channels else None))
    put(values, "samplebits", number(fields.get("audioSampleType", "")))
    put(values, "date", date(fields.get("CreateDate", "")))
    for field, own in (("make", "Make"), ("model", "Model"), ("serial", "SerialNumber"), ("title", "Name"),
                       ("artist", "artist"), ("artist", "creator"), ("copyright", "copyright")):
        put(values, field, text_of(fields.get(own, "")))
    put(values, "timecode", text_of(fields.get("startTimecode", "").replace(";", ":")))
    put(values, "latitude", angle(fields.get("GPSLatitude", "")))
    put(values, "longitude", angle(fields.get("GPSLongitude", "")))
    put(values, "altitude", number(fields.get("GPSAltitude", "")))
    return values


def run(command):
    """The output of a program; empty if it takes too long, as some do for damaged files."""
    try:
        return subprocess.run(command, capture_output=True, check=False, timeout=SECONDS).stdout.decode("utf-8", "replace")
    except subprocess.TimeoutExpired:
        return ""


def load(text, otherwise):
    try:
        return json.loads(text)
    except ValueError:
        return otherwise


def read_all(sorvik, files):
    """Yields the values of each program for each file."""
    for start in range(0, len(files), BATCH):
        part = files[start:start + BATCH]
        exif = {e["SourceFile"]: e for e in load(run(["exiftool", "-j", "-n", "-api", "largefilesupport=1", *part]), [])}
        own = {}
        for line in run([sorvik, "meta", "--ndjson", *part]).splitlines():
            document = load(line, {})
            own[document.get("path")] = document.get("fields", {})
        for file in part:
            probe = load(run(["ffprobe", "-v", "quiet", "-print_format", "json", "-show_format", "-show_streams", file]), {})
            tools = {"exiftool": of_exiftool(exif.get(file, {})),
                     "mediainfo": of_mediainfo(load(run(["mediainfo", "--Output=JSON", file]), {})),
                     "ffprobe": of_ffprobe(probe)}
            describe_still(exif.get(file, {}), tools)
            yield file, of_sorvik(own.get(os.path.abspath(file), {})), tools


def describe_still(tags, tools):
    """Other programs give the stored size of photographs, and the compression as a codec."""
    if not tags.get("MIMEType", "").startswith("image"):
        return
    turned = is_turned(tags)
    for tool, values in tools.items():
        values.pop("codec", None)
        values.pop("space", None)
        if turned and tool != "exiftool" and "size" in values:
            values["size"] = "x".join(reversed(values["size"].split("x")))


def agreed(field, tools):
    """The value that at least two programs give; None if there is none."""
    values = [v[field] for v in tools.values() if field in v]
    for i, value in enumerate(values):
        if any(close(field, value, other) for other in values[i + 1:]):
            return value
    return None


def is_right(field, own, tools, value):
    # Depths and channels without a name in the schema are "Other".
    if own == "other":
        return value not in (1.0, 2.0, 6.0, 8.0) if field == "channels" else value not in (8.0, 16.0)
    # Right if it equals any of the programs that agree, which may differ within the tolerance.
    return any(close(field, own, v[field]) for v in tools.values() if field in v and close(field, v[field], value))


class Counts:
    def __init__(self):
        self.files = self.right = self.wrong = self.empty = 0
        self.filled = collections.Counter()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("sorvik")
    parser.add_argument("folders", nargs="+")
    parser.add_argument("--wrong", action="store_true", help="list wrong values")
    parser.add_argument("--empty", action="store_true", help="list missing values")
    options = parser.parse_args()
    files = sorted(os.path.join(root, f) for folder in options.folders for root, _, names in os.walk(folder) for f in names
                   if os.path.isfile(os.path.join(root, f)))
    kinds, fields, listed = collections.defaultdict(Counts), collections.defaultdict(Counts), []
    for file, own, tools in read_all(options.sorvik, files):
        kind = kinds[os.path.splitext(file)[1].lower() or "(none)"]
        kind.files += 1
        kind.filled["sorvik"] += len(own)
        for tool, values in tools.items():
            kind.filled[tool] += len(values)
        for field in sorted({f for values in tools.values() for f in values}):
            value = agreed(field, tools)
            if value is None:
                continue
            state = "empty" if field not in own else "right" if is_right(field, own[field], tools, value) else "wrong"
            for counts in (kind, fields[field]):
                setattr(counts, state, getattr(counts, state) + 1)
            if (state == "wrong" and options.wrong) or (state == "empty" and options.empty):
                listed.append("%s: %s %s: %s, expected %s" % (state, file, field, own.get(field, "-"), value))
    print_tables(kinds, fields, listed)


def print_tables(kinds, fields, listed):
    total = Counts()
    head = "%-12s %6s %6s %6s %6s" % ("", "files", "right", "wrong", "empty")
    tools = ("sorvik", "exiftool", "mediainfo", "ffprobe")
    print(head + "   filled: " + " ".join("%9s" % tool for tool in tools))
    for kind, counts in sorted(kinds.items()):
        print("%-12s %6d %6d %6d %6d           " % (kind, counts.files, counts.right, counts.wrong, counts.empty)
              + " ".join("%9d" % counts.filled[tool] for tool in tools))
        for member in ("files", "right", "wrong", "empty"):
            setattr(total, member, getattr(total, member) + getattr(counts, member))
    print("\n%-12s %6s %6s %6s %6s" % ("field", "", "right", "wrong", "empty"))
    for field, counts in sorted(fields.items()):
        print("%-12s %6s %6d %6d %6d" % (field, "", counts.right, counts.wrong, counts.empty))
    values = max(total.right + total.wrong + total.empty, 1)
    print("\n%d files, %d values: %.2f %% right, %.2f %% wrong, %.2f %% empty" % (
        total.files, values, 100 * total.right / values, 100 * total.wrong / values, 100 * total.empty / values))
    if listed:
        print("\n" + "\n".join(listed))


if __name__ == "__main__":
    sys.exit(main())
