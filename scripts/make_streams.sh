#!/bin/bash
# make_streams.sh OUTDIR: makes the DV test streams OUTDIR/pal.dv and OUTDIR/ntsc.dv, 8 seconds each.
#
# Raw DV as a camera sends it: a moving test picture in saturated colours, the frame's number burnt in so
# large that it can be read in a small picture, and a stereo tone. Every frame differs
# from every other. Complete streams are kept; a stream that was cut short is made again.
#
# For the decoder, OUTDIR/pal_pictures.dv and OUTDIR/ntsc_pictures.dv: two frames each of what is hard to
# decode, and in OUTDIR/*_pictures.yuv the planes that ffmpeg makes of them.
set -euo pipefail

die() {
    echo "make_streams.sh: $*" >&2
    exit 1
}

[[ $# -eq 1 && -n $1 ]] || die "usage: make_streams.sh OUTDIR"
out=$1
seconds=8
font=${MARVO_FONT:-/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf}
made=
trap '[[ -z $made ]] || rm -f "$made"' EXIT

# make_stream NAME SIZE RATE FRAMES FRAME_BYTES PIXEL_FORMAT
make_stream() {
    local file=$out/$1.dv size=$2 rate=$3 frames=$4 frame_bytes=$5 pixels=$6
    local bytes=$((frames * frame_bytes))
    if [[ -f $file && $(stat -c %s "$file") -eq $bytes ]]; then
        return
    fi
    command -v ffmpeg >/dev/null || die "ffmpeg is missing: install the package ffmpeg"
    [[ -r $font ]] || die "the font $font is missing: install the package fonts-dejavu-core"
    mkdir -p "$out" || die "cannot make the folder $out"
    made=$out/.$1.$$.dv
    # The multiplexer wants sound beyond the last picture: a second more of both is made, and cut off.
    local duration=$((seconds + 1))
    local number="text='%{eif\:n\:d\:3}':fontfile=$font:fontsize=200:fontcolor=white"
    local box="box=1:boxcolor=black:boxborderw=24:x=(w-tw)/2:y=(h-th)/2"
    ffmpeg -nostdin -hide_banner -loglevel error -y \
        -f lavfi -i "testsrc2=size=$size:rate=$rate:duration=$duration,drawtext=$number:$box" \
        -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=$duration" \
        -f lavfi -i "sine=frequency=660:sample_rate=48000:duration=$duration" \
        -filter_complex "[1:a][2:a]join=inputs=2:channel_layout=stereo[sound]" -map 0:v -map "[sound]" \
        -c:v dvvideo -pix_fmt "$pixels" -c:a pcm_s16le -f dv "$made" || die "ffmpeg could not make $file"
    local got
    got=$(stat -c %s "$made")
    [[ $got -ge $bytes ]] || die "ffmpeg made only $got of $bytes bytes for $file"
    truncate -s "$bytes" "$made"
    mv -f "$made" "$file"
    made=
    echo "made $file"
}

# make_pictures NAME SIZE RATE FRAME_BYTES PIXEL_FORMAT BITS_PER_PIXEL
make_pictures() {
    local file=$out/$1_pictures size=$2 rate=$3 frame_bytes=$4 pixels=$5 bits=$6 each=2
    local at="size=$size:rate=$rate" twice="size=$size:rate=2*$rate" source graph='' pads='' count=0
    local sources=(
        "testsrc2=$at,noise=alls=20:allf=t"
        "color=gray:$at,noise=alls=100:allf=t"
        "color=black:$at"
        "rgbtestsrc=$at"
        "smptehdbars=$at"
        "mandelbrot=$at:start_scale=0.1,noise=alls=8:allf=t"
        "life=$at:ratio=0.3:mold=20:life_color=orange:death_color=blue:seed=1"
        "testsrc2=$twice,interlace=scan=tff:lowpass=0"
        "testsrc2=$twice,noise=alls=10:allf=t,interlace=scan=bff:lowpass=0"
    )
    local total=$((each * ${#sources[@]}))
    if [[ -f $file.yuv && $(stat -c %s "$file.yuv") -eq $((total * ${size/x/*} * bits / 8)) &&
        -f $file.dv && $(stat -c %s "$file.dv") -eq $((total * frame_bytes)) ]]; then
        return
    fi
    made=$out/.$1_pictures.$$
    for source in "${sources[@]}"; do
        graph+="$source,trim=end_frame=$each,setpts=PTS-STARTPTS,setsar=1,format=${pixels}[v$count];"
        pads+="[v$count]"
        count=$((count + 1))
    done
    # With this flag the encoder chooses for each block whether its two fields are told apart.
    ffmpeg -nostdin -hide_banner -loglevel error -y -filter_complex "$graph${pads}concat=n=${count}[all]" \
        -map "[all]" -c:v dvvideo -flags +ildct -f rawvideo "$made" || die "ffmpeg could not make $file.dv"
    mv -f "$made" "$file.dv"
    ffmpeg -nostdin -hide_banner -loglevel fatal -y -f dv -i "$file.dv" -f rawvideo "$made" ||
        die "ffmpeg could not decode $file.dv"
    mv -f "$made" "$file.yuv"
    made=
    echo "made $file.dv and $file.yuv"
}

make_stream pal 720x576 25 $((25 * seconds)) 144000 yuv420p
make_stream ntsc 720x480 30000/1001 $((30 * seconds)) 120000 yuv411p
make_pictures pal 720x576 25 144000 yuv420p 12
make_pictures ntsc 720x480 30000/1001 120000 yuv411p 12
# What the camera plays when nobody says otherwise.
[[ -f $out/camera.txt ]] || echo 'stream = pal.dv' >"$out/camera.txt"
