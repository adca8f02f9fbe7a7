"""The encoder settings of an export, for the reference commands to take the same. They are those of
src/media/encoding.cpp and movie_writer.h; tests/media/movie_writer_test.cpp compares the two."""

FFMPEG = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y"]
TAGS = ["-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709"]
HLG_TAGS = ["-color_primaries", "bt2020", "-color_trc", "arib-std-b67", "-colorspace", "bt2020nc"]
SOUND = ["-c:a", "aac", "-b:a", "160k", "-ar", "48000", "-ac", "2"]

PICTURE_ENCODER = ["-c:v", "libx264", "-preset", "veryfast", "-crf", "20", "-profile:v", "high",
                   "-bf", "2", "-g", "15", "-flags", "+cgop", "-pix_fmt", "yuv420p", *TAGS]
HLG_ENCODER = ["-c:v", "libx265", "-preset", "superfast", "-crf", "22", "-profile:v", "main10",
               "-bf", "2", "-g", "15", "-x265-params", "log-level=none:open-gop=0",
               "-tag:v", "hvc1", "-pix_fmt", "yuv420p10le", *HLG_TAGS]
ENCODER = [*PICTURE_ENCODER, "-movflags", "+faststart"]
