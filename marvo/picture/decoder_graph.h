/// @file
/// The filter graph in which single frames are decoded.
#pragma once

#include "marvo/com/com_fg.h"
#include "marvo/com/com_filter.h"
#include "marvo/com/com_ptr.h"
#include "marvo/dv/layout.h"
#include "marvo/picture/picture.h"

#include <string>

namespace picture {

class FrameSource;
class PictureSink;

/// A graph of three filters: a source that sends one frame at a time, the system's DV video decoder, and a
/// sink that keeps the picture. It is made for frames of one size and kept for as many as there are.
///
/// Threads: one at a time. Initialises COM on the thread that makes it, where nobody has.
class DecoderGraph {
public:
    DecoderGraph();
    /// Takes the graph apart.
    ~DecoderGraph();
    DecoderGraph(const DecoderGraph&) = delete;
    DecoderGraph& operator=(const DecoderGraph&) = delete;

    /// Makes the graph for frames of `frameBytes` bytes and runs it. False, with a sentence in `fault`, when
    /// there is no decoder or it does not take such frames; nothing is left then.
    bool make(unsigned long frameBytes, std::wstring& fault);
    /// The size of the frames that the graph is made for; 0 without a graph.
    unsigned long frameBytes() const { return frameBytes_; }
    /// Takes the graph apart and gives the decoder back.
    void takeApart();

    /// Has a frame of that size decoded. False, with a sentence in `fault`, when no picture comes in time;
    /// the graph is taken apart then, so that a picture that comes late belongs to no other frame.
    bool decode(vdv::FrameBytes frame, dvPicture& picture, std::wstring& fault);

private:
    bool connect(unsigned long frameBytes);

    vwin::com_fg graph_;
    vwin::com_filter decoder_;
    vwin::com_<FrameSource> source_;
    vwin::com_<PictureSink> sink_;
    unsigned long frameBytes_ = 0;
};

} // namespace picture
