"""The encoder settings of an export, for the reference commands to take the same. They are those of
MovieWriter: media/movie_writer.h."""

FFMPEG = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y"]
TAGS = ["-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709"]
ENCODER = ["-c:v", "libx264", "-preset", "veryfast", "-crf", "20", "-profile:v", "high", "-bf", "2",
           "-g", "15", "-pix_fmt", "yuv420p", *TAGS, "-movflags", "+faststart"]
SOUND = ["-c:a", "aac", "-b:a", "160k", "-ar", "48000", "-ac", "2"]
