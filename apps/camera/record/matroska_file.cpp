#include "apps/camera/record/matroska_file.h"

#include "apps/camera/record/ebml.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <algorithm>
#include <chrono>

namespace ostrel::apps::cli {

namespace {

// As RFC 9559 lists them.
enum Element : ebml::Id {
    EBML = 0x1A45DFA3,
    EBML_DOC_TYPE = 0x4282,
    EBML_DOC_TYPE_VERSION = 0x4287,
    EBML_DOC_TYPE_READ_VERSION = 0x4285,
    SEGMENT = 0x18538067,
    SEEK_HEAD = 0x114D9B74,
    SEEK = 0x4DBB,
    SEEK_ID = 0x53AB,
    SEEK_POSITION = 0x53AC,
    INFO = 0x1549A966,
    TIMESTAMP_SCALE = 0x2AD7B1,
    DURATION = 0x4489,
    DATE_UTC = 0x4461,
    MUXING_APP = 0x4D80,
    WRITING_APP = 0x5741,
    TRACKS = 0x1654AE6B,
    TRACK_ENTRY = 0xAE,
    TRACK_NUMBER = 0xD7,
    TRACK_UID = 0x73C5,
    TRACK_TYPE = 0x83,
    FLAG_LACING = 0x9C,
    CODEC_ID = 0x86,
    VIDEO = 0xE0,
    FLAG_INTERLACED = 0x9A,
    PIXEL_WIDTH = 0xB0,
    PIXEL_HEIGHT = 0xBA,
    CLUSTER = 0x1F43B675,
    TIMESTAMP = 0xE7,
    SIMPLE_BLOCK = 0xA3,
    CUES = 0x1C53BB6B,
    CUE_POINT = 0xBB,
    CUE_TIME = 0xB3,
    CUE_TRACK_POSITIONS = 0xB7,
    CUE_TRACK = 0xF7,
    CUE_CLUSTER_POSITION = 0xF1
};

const int64_t TICK = 1000000;      // nanoseconds of the file's own times
const int64_t CLUSTER_TIME = 1000; // ticks that one spans at most; its blocks' own times have 16 bits
const std::size_t SEEK_HEAD_ROOM = 64;
const uint64_t TRACK = 1;
const uint64_t VIDEO_TRACK = 1;
const uint64_t PROGRESSIVE = 2;
const char APPLICATION[] = "ostrel-camera " OSTREL_VERSION;
const int64_t SECONDS_1970_TO_2001 = 978307200;

std::string ebmlHead() {
    return ebml::master(EBML, ebml::text(EBML_DOC_TYPE, "matroska") + ebml::number(EBML_DOC_TYPE_VERSION, 2) +
                                  ebml::number(EBML_DOC_TYPE_READ_VERSION, 2));
}

std::string durationElement(double ticks) {
    return ebml::real(DURATION, ticks);
}

std::string trackElement(const Size& size) {
    const std::string video = ebml::number(FLAG_INTERLACED, PROGRESSIVE) +
                              ebml::number(PIXEL_WIDTH, static_cast<uint64_t>(size.width)) +
                              ebml::number(PIXEL_HEIGHT, static_cast<uint64_t>(size.height));
    return ebml::master(
        TRACKS,
        ebml::master(TRACK_ENTRY, ebml::number(TRACK_NUMBER, TRACK) + ebml::number(TRACK_UID, TRACK) +
                                      ebml::number(TRACK_TYPE, VIDEO_TRACK) + ebml::number(FLAG_LACING, 0) +
                                      ebml::text(CODEC_ID, "V_MJPEG") + ebml::master(VIDEO, video)));
}

int64_t nanosecondsSince2001() {
    const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::nanoseconds(since1970 - std::chrono::seconds(SECONDS_1970_TO_2001)).count();
}

// Of a picture that needs no other; its content follows.
std::string blockHead(int64_t ticksInCluster, std::size_t bytes) {
    std::string head;
    head += static_cast<char>(0x80 | TRACK);
    head += static_cast<char>(ticksInCluster >> 8);
    head += static_cast<char>(ticksInCluster & 0xFF);
    head += static_cast<char>(0x80);
    return ebml::bytesOf(SIMPLE_BLOCK) + ebml::size(head.size() + bytes) + head;
}

} // namespace

MatroskaFile::MatroskaFile(const std::string& path, const Size& size)
    : file_(path, OutputFile::Mode::Stream), size_(size) {}

// The seek head and the duration take the place of empty space at the end.
void MatroskaFile::writeHead() {
    std::string head = ebmlHead() + ebml::openMaster(SEGMENT);
    segment_ = head.size();
    seekHead_ = head.size();
    head += ebml::space(SEEK_HEAD_ROOM);
    const std::string space = ebml::space(durationElement(0).size());
    const std::string facts = ebml::number(TIMESTAMP_SCALE, TICK) +
                              ebml::date(DATE_UTC, nanosecondsSince2001()) +
                              ebml::text(MUXING_APP, APPLICATION) + ebml::text(WRITING_APP, APPLICATION);
    const std::string info = ebml::master(INFO, facts + space);
    duration_ = head.size() + info.size() - space.size();
    file_.write(head + info + trackElement(size_));
}

void MatroskaFile::write(const uint8_t* jpeg, std::size_t bytes, int64_t captureTime) {
    const bool first = pictures_ == 0;
    const int64_t passed = first ? 0 : (captureTime - firstTime_ + TICK / 2) / TICK;
    const int64_t ticks = first ? 0 : std::max(passed, lastTicks_ + 1);
    const uint64_t before = file_.written();
    const std::size_t clustersBefore = clusters_.size();
    try {
        if (first)
            writeHead();
        if (!open_ || ticks - clusters_.back().time >= CLUSTER_TIME) {
            closeCluster();
            openCluster(ticks);
        }
        file_.write(blockHead(ticks - clusters_.back().time, bytes));
        file_.write(jpeg, bytes);
    } catch (const Failure& failure) {
        if (clusters_.size() > clustersBefore) {
            clusters_.pop_back();
            open_ = false;
        }
        throw Failure(failure.code(), failure.what() + kept(before));
    }
    clusters_.back().end = file_.written();
    firstTime_ = first ? captureTime : firstTime_;
    lastTicks_ = ticks;
    ++pictures_;
}

void MatroskaFile::openCluster(int64_t time) {
    Cluster cluster;
    cluster.time = time;
    cluster.begin = file_.written();
    clusters_.push_back(cluster);
    open_ = true;
    file_.write(ebml::openMaster(CLUSTER) + ebml::number(TIMESTAMP, static_cast<uint64_t>(time)));
}

void MatroskaFile::closeCluster() {
    if (!open_)
        return;
    const Cluster& last = clusters_.back();
    const uint64_t content = last.begin + ebml::openMaster(CLUSTER).size();
    file_.rewrite(content - ebml::SIZE_BYTES, ebml::size(last.end - content));
    open_ = false;
}

// Takes the torn picture away again, brings the file to its end and says what it holds.
std::string MatroskaFile::kept(uint64_t end) {
    if (pictures_ == 0 || !file_.cutTo(end))
        return std::string();
    finish();
    return "; it holds the " + counted(pictures_, "frame") + " before";
}

void MatroskaFile::writeCues() {
    std::string points;
    for (const Cluster& cluster : clusters_)
        points += ebml::master(
            CUE_POINT, ebml::number(CUE_TIME, static_cast<uint64_t>(cluster.time)) +
                           ebml::master(CUE_TRACK_POSITIONS,
                                        ebml::number(CUE_TRACK, TRACK) +
                                            ebml::number(CUE_CLUSTER_POSITION, cluster.begin - segment_)));
    const uint64_t position = file_.written() - segment_;
    file_.write(ebml::master(CUES, points));
    const std::string seekHead =
        ebml::master(SEEK_HEAD, ebml::master(SEEK, ebml::text(SEEK_ID, ebml::bytesOf(CUES)) +
                                                       ebml::number(SEEK_POSITION, position)));
    file_.rewrite(seekHead_, seekHead + ebml::space(SEEK_HEAD_ROOM - seekHead.size()));
    file_.rewrite(segment_ - ebml::SIZE_BYTES, ebml::size(file_.written() - segment_));
}

// The last picture is shown as long as the others were on average.
void MatroskaFile::writeDuration() {
    if (pictures_ < 2)
        return;
    const double shown = static_cast<double>(lastTicks_);
    file_.rewrite(duration_, durationElement(shown + shown / static_cast<double>(pictures_ - 1)));
}

void MatroskaFile::finish() {
    closeCluster();
    writeDuration();
    const uint64_t end = file_.written();
    try {
        if (file_.regular())
            writeCues();
    } catch (const Failure&) { // no room: players search without them
        file_.cutTo(end);
    }
    file_.commit();
}

} // namespace ostrel::apps::cli
