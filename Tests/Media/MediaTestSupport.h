// Reading back what a test made: all frames of a file, and the streams of a container.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "Media/ArgbFrame.h"
#include "Media/MediaReader.h"

namespace Quillmere::Velmira {

inline std::vector<ArgbFrame> readAll(const std::string& path, FrameRange range = {}) {
    MediaReader reader(path, range);
    std::vector<ArgbFrame> frames;
    ArgbFrame frame;
    while (reader.read(frame)) frames.push_back(frame);
    return frames;
}

// Channel c (0 alpha, 1 red, 2 green, 3 blue) of pixel (x, y).
inline int channel(const ArgbFrame& frame, int x, int y, int c) {
    return frame.row(y)[static_cast<std::size_t>(x) * 4 + static_cast<std::size_t>(c)];
}

// How far the colour channels of a frame stand from one flat colour, outside the 16x16 marker block at the top
// left that video fixtures carry.
struct Difference {
    int max = 0;
    double mean = 0.0;
};

inline Difference differenceFromFlat(const ArgbFrame& frame, const std::array<int, 3>& colour) {
    Difference d;
    long long sum = 0, count = 0;
    for (int y = 0; y < frame.height; ++y)
        for (int x = 0; x < frame.width; ++x) {
            if (x < 16 && y < 16) continue;
            for (int c = 0; c < 3; ++c) {
                int diff = std::abs(channel(frame, x, y, c + 1) - colour[static_cast<std::size_t>(c)]);
                d.max = std::max(d.max, diff);
                sum += diff;
                ++count;
            }
        }
    d.mean = count ? static_cast<double>(sum) / static_cast<double>(count) : 0.0;
    return d;
}

// What the container holds of one kind of stream, read with libavformat alone.
struct StreamSummary {
    int streams = 0;
    std::string codec;
    int sampleRate = 0;
    int packets = 0;
    double firstSeconds = 0.0;
    double endSeconds = 0.0;  // end of the last packet
};

inline StreamSummary summarise(const std::string& path, AVMediaType type) {
    StreamSummary summary;
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) return summary;
    avformat_find_stream_info(format, nullptr);
    int wanted = -1;
    for (unsigned i = 0; i < format->nb_streams; ++i)
        if (format->streams[i]->codecpar->codec_type == type) {
            if (wanted < 0) wanted = static_cast<int>(i);
            ++summary.streams;
        }
    if (wanted >= 0) {
        AVStream* stream = format->streams[wanted];
        summary.codec = avcodec_get_name(stream->codecpar->codec_id);
        summary.sampleRate = stream->codecpar->sample_rate;
        AVPacket* packet = av_packet_alloc();
        bool first = true;
        while (av_read_frame(format, packet) >= 0) {
            if (packet->stream_index == wanted) {
                double start = static_cast<double>(packet->pts) * av_q2d(stream->time_base);
                double end = static_cast<double>(packet->pts + packet->duration) * av_q2d(stream->time_base);
                if (first || start < summary.firstSeconds) summary.firstSeconds = start;
                if (first || end > summary.endSeconds) summary.endSeconds = end;
                first = false;
                ++summary.packets;
            }
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
    }
    avformat_close_input(&format);
    return summary;
}

}  // namespace Quillmere::Velmira
