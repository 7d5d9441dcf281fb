// What stands below the options in each command's help, in 80 columns. Its
// examples are run by the tests.
#ifndef CORVANE_HOST_COMMANDS_HELP_TEXTS_H_
#define CORVANE_HOST_COMMANDS_HELP_TEXTS_H_

namespace corvane {

constexpr char kExamples[] =
    R"(Examples:

  corvane record take.aac
  corvane record -i speech.wav take.aac
  corvane resume take.aac
  corvane devices
  corvane finalize take.aac
  corvane repair-wav take.wav
  corvane info take.aac

corvane COMMAND --help tells more, the manual page corvane(1) all.
)";

constexpr char kRecordNotes[] =
    R"(Without -i it is the microphone that is recorded, unless something is piped in.
Files are what libsndfile reads (WAV, FLAC, Ogg, MP3...); rate and channels come
from the file. Raw audio is interleaved s16le and needs -r and -c:

  corvane record take.aac
  corvane record -i speech.wav take.aac
  arecord -t raw -f S16_LE -r 48000 | corvane record -i - -r 48000 -c 1 take.aac

Ctrl-C (SIGINT), SIGTERM and SIGHUP end the take and seal it. At a terminal,
space pauses and goes on, m marks, q stops, ? shows the keys. The figures come
as JSON on standard output, all else on standard error. Exit status: 0 done, 1
failed, 2 wrong usage.
)";

constexpr char kResumeNotes[] =
    R"(The audio goes behind the capture's last whole frame; a frame that was torn
is cut off first, and nothing else is changed. What doesn't look like a capture
is left alone; --force goes on in it all the same. Input is as for record:

  corvane resume -i rest.wav take.aac
  arecord -t raw -f S16_LE -r 48000 | corvane resume -i - take.aac

The figures of the whole capture come as JSON on standard output, all else on
standard error. Exit status: 0 done, 1 failed, 2 wrong usage.
)";

constexpr char kDevicesNotes[] =
    R"(The star marks what is recorded from without -D. The list is on standard
output; the device's name goes behind -D as it stands there, in quotes where the
shell needs them:

  corvane record -D 'hw:CARD=USB,DEV=0' take.aac

Exit status: 0 done, 1 failed, 2 wrong usage.
)";

constexpr char kFinalizeNotes[] =
    R"(Cuts off a frame that was torn, makes the file durable, and verifies that it
holds audio; nothing else in it is changed. A capture plays without this too.
What doesn't look like a capture is left alone; --force seals it all the same.

  corvane finalize take.aac
  corvane finalize *.aac

The figures come as JSON on standard output, a line for each file, all else on
standard error. Of several files a failed one doesn't hold up the others. Exit
status: 0 done, 1 failed, 2 wrong usage.
)";

constexpr char kRepairWavNotes[] =
    R"(For 16-bit PCM whose recorder died before it wrote the sizes: the header, 44
bytes, is written anew from the file's size, and the audio is not touched. What
that would damage is refused: other kinds of file, longer headers, other
samples.

  corvane repair-wav take.wav
  corvane repair-wav take.wav -r 48000 -c 1     when the header lost those too

The result, with the old header in it, comes as JSON on standard output, all
else on standard error. Exit status: 0 done, 1 failed or refused, 2 wrong usage.
)";

constexpr char kInfoNotes[] =
    R"(Says how much audio is in a capture, what of it is torn, what is foreign and
where, and whether it is in use; or why a file is no capture. Nothing is
changed, so a take may be looked at while it is recorded.

  corvane info take.aac
  corvane info --json *.aac

The findings come on standard output, why a file is no capture on standard
error. Exit status: 0 all are captures, 1 not all, 2 wrong usage.
)";

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_HELP_TEXTS_H_
