// Camera, splitter and decoder connected to each other. The engine's tests show their pictures.
#include "collector.h"

#include "devices/camera.h"
#include "devices/decoder.h"
#include "devices/splitter.h"

using namespace device_tests;
using namespace devices;

namespace {

class chain_test : public device_test, public testing::WithParamInterface<bool> {
protected:
    chain_test() : system_(GetParam() ? dv_system::pal_system() : dv_system::ntsc_system()) {
        camera_config config;
        config.stream = folder_.write("clip.dv", marked_frames(system_, 5));
        config.speed = 10;
        source_ = graph_.add(new camera(config));
        parts_ = graph_.add(new splitter);
        pictures_ = graph_.add(new decoder);
        sink_ = graph_.add(new collector);
    }

    static IPin* pin(base_filter* filter, int index) { return filter->pin(index)->as_pin(); }

    const dv_system& system_;
    test_folder folder_;
    graph graph_;
    camera* source_;
    splitter* parts_;
    decoder* pictures_;
    collector* sink_;
};

} // namespace

TEST_P(chain_test, carries_frames) {
    sink_->offers_allocator = GetParam(); // else the system's is taken
    ASSERT_TRUE(graph_.connect(source_, parts_) == S_OK && graph_.connect(parts_, sink_) == S_OK);
    ASSERT_EQ(graph_.run(), S_OK);
    const auto came = sink_->wait_for(6);
    graph_.stop();
    for (int index = 0; index < 6; ++index) {
        EXPECT_EQ(came[index].data, grey_frame(system_, index % 5));
        EXPECT_EQ(came[index].media_start, index);
        EXPECT_GE(came[index].start, 0);
    }
}

TEST_P(chain_test, connects_only_what_fits) {
    EXPECT_EQ(graph_.connect(source_, pictures_), VFW_E_TYPE_NOT_ACCEPTED);
    ASSERT_TRUE(graph_.connect(source_, parts_) == S_OK && graph_.connect(parts_, pictures_) == S_OK);
    const VIDEOINFOHEADER* info = media_type::video_info(pictures_->pin(0)->type().get());
    ASSERT_NE(info, nullptr);
    EXPECT_TRUE(info->bmiHeader.biWidth == 720 && info->bmiHeader.biHeight == (GetParam() ? 576 : 480));
    const struct {
        const GUID& subtype;
        DWORD compression;
        WORD bits;
    } offered[] = {{GUID_NULL, BI_RGB, 32}, // the first
                   {MEDIASUBTYPE_RGB24, BI_RGB, 24},
                   {MEDIASUBTYPE_YUY2, MAKEFOURCC('Y', 'U', 'Y', '2'), 16},
                   {MEDIASUBTYPE_UYVY, MAKEFOURCC('U', 'Y', 'V', 'Y'), 16}};
    for (const auto& one : offered) {
        graph_.get()->Disconnect(pin(pictures_, 1));
        graph_.get()->Disconnect(pin(sink_, 0));
        AM_MEDIA_TYPE wanted{};
        wanted.subtype = one.subtype;
        ASSERT_EQ(pin(pictures_, 1)->Connect(pin(sink_, 0), &wanted), S_OK);
        const AM_MEDIA_TYPE& type = sink_->pin(0)->type().get();
        EXPECT_EQ(type.lSampleSize, 720u * system_.height * one.bits / 8);
        const BITMAPINFOHEADER& picture = media_type::video_info(type)->bmiHeader;
        EXPECT_TRUE(picture.biCompression == one.compression && picture.biBitCount == one.bits);
    }
    ASSERT_EQ(graph_.run(), S_OK);
    const bytes picture = sink_->wait_for(1)[0].data;
    graph_.stop();
    EXPECT_EQ(picture, bytes(720 * system_.height * 2, 128)) << "grey";
    // The input gone, the output goes, and the decoder is free again.
    EXPECT_EQ(graph_.get()->Disconnect(pin(parts_, 0)), S_OK);
    EXPECT_EQ(parts_->pin_count(), 1);
    EXPECT_FALSE(pictures_->pin(0)->connected());
}

INSTANTIATE_TEST_SUITE_P(systems, chain_test, testing::Bool(),
                         [](const auto& info) { return info.param ? "pal" : "ntsc"; });
