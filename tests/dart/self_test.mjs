// Each check must see what it is there for: in a copy of the texts one thing is
// broken, and the check has to name it.
import {allChecks} from './checks.mjs';

// [check, file, what stands there, what is put there, what has to be said]
const kBreaks = [
  ['syntax', 'lib/src/corvane.dart', 'class Corvane {', 'class Corvane {{', /no Dart/],
  ['syntax', 'lib/src/capture_sink.dart', 'if (_pipe != null) {', 'if (_pipe != ) {',
   /no Dart/],
  ['syntax', 'README.md', '```dart\nimport ', '```dart\nimport import ',
   /README.*no Dart/],

  ['channel words', 'lib/src/corvane.dart', "'com.velka.corvane')", "'com.velka.corvana')",
   /methodChannel: only Dart has com.velka.corvana/],
  ['channel words', 'lib/src/corvane.dart', "corvane/log'", "corvane/logs'",
   /logChannel/],
  ['channel words', 'lib/src/corvane.dart', "<void>('flush')", "<void>('sync')",
   /methods: only C\+\+ has flush/],
  ['channel words', 'src/plugin/method_table.h', '{"append", ', '{"appendPcm", ',
   /methods: only C\+\+ has appendPcm/],
  ['channel words', 'lib/src/corvane.dart', "'wavPath': wavPath,", '',
   /methods: only Dart has finalizeWavOnly/],
  ['channel words', 'src/encoder/format_args.h', 'lookup_typed(args, "bitRate"',
   'lookup_typed(args, "bit_rate"', /bit_rate/],
  ['channel words', 'src/finalize/finalize_wav_only.h', '"wavPath"', '"path"',
   /methods: only C\+\+ has finalizeWavOnly\(channels, path/],
  ['channel words', 'lib/src/corvane.dart', "<void>('append', pcm)", "<void>('append')",
   /methods: only Dart has append\(\)/],
  ['channel words', 'lib/src/messages.dart', "map['bytes']", "map['size']",
   /resultKeys: only Dart has size/],
  ['channel words', 'src/report/reply.h', 'set("bytes"', 'set("size"',
   /resultKeys: only C\+\+ has size/],
  ['channel words', 'src/report/reply.h', 'details, "domain"', 'details, "origin"',
   /errorKeys: only C\+\+ has origin/],
  ['channel words', 'src/worker/plugin_state.h', '(line, "level"', '(line, "severity"',
   /logKeys/],
  ['channel words', 'lib/src/corvane_exception.dart', "'VERIFY_FAILED'", "'VERIFY_FAIL'",
   /errorCodes: only Dart has VERIFY_FAIL$/m],
  ['channel words', 'src/report/native_error.h', '"CAPTURE_MISSING"', '"NO_CAPTURE"',
   /errorCodes: only C\+\+ has NO_CAPTURE/],
  ['channel words', 'src/recording/start.h', 'plain_error(kErrWriteFailed,',
   'plain_error("PRESERVE_FAILED",', /errorCodes: only C\+\+ has PRESERVE_FAILED/],
  ['channel words', 'src/report/native_error.h', '"ffmpeg"', '"libav"',
   /errorDomains: only C\+\+ has libav/],
  ['channel words', 'lib/src/corvane_log.dart', "warning('warning')", "warning('warn')",
   /logLevels: only Dart has warn$/m],
  ['channel words', 'src/recording/controls.h', 'state->Log(kLevelWarning', 'state->Log("notice"',
   /logLevels: only C\+\+ has notice/],
  ['channel words', 'lib/src/corvane.dart', 'defaultBitRate = 64000', 'defaultBitRate = 96000',
   /defaultBitRate/],
  ['channel words', 'lib/src/corvane.dart', 'int bitRate = defaultBitRate', 'int bitRate = 32000',
   /bitRateDefaults: only Dart has 32000/],
  ['channel words', 'src/recording/start.h', 'kOrphanSlots = 100', 'kOrphanSlots = 99',
   /orphanSlots/],
  ['channel words', 'lib/src/capture_recovery.dart', "'.orphan'", "'.old'",
   /orphanInfix/],
  ['channel words', 'src/adts/stream_config.h', '88200', '88000', /sampleRates/],
  ['channel words', 'lib/src/capture_sink.dart', 'Unanswered = 64', 'Unanswered = 65',
   /maxUnanswered/],

  ['documentation', 'lib/src/corvane.dart', '  /// Goes on after a [pause].', '  // Goes on.',
   /Corvane\.resume has no doc comment/],
  ['documentation', 'lib/src/corvane_log.dart', '/// One line of the', '// One line of the',
   /CorvaneLogLine has no/],
  ['documentation', 'lib/src/corvane_exception.dart', '  /// The file to work on', '  // The file',
   /CorvaneErrorCode\.captureMissing has no/],
  ['documentation', 'lib/src/capture_result.dart', '  /// The size of the file', '  // The size',
   /CaptureResult\.bytes has no/],

  ['members', 'example/lib/src/recorder.dart', 'corvane.pause()', 'corvane.hold()',
   /Corvane has no "hold"/],
  ['members', 'example/lib/src/recorder.dart', '.pipe(sink)', '.pipe(sink.inner)',
   /CaptureSink has no "inner"/],
  ['members', 'example/lib/src/recorder.dart', 'CaptureSink(corvane: corvane)',
   'CaptureSink(plugin: corvane)', /CaptureSink has no parameter "plugin"/],
  ['members', 'example/lib/src/recorder.dart', 'corvane.resumeCapture(capture: capture)',
   'corvane.resumeCapture()', /resumeCapture wants "capture"/],
  ['members', 'example/lib/src/log_view.dart', 'line.message', 'line.text',
   /CorvaneLogLine has no "text"/],
  ['members', 'example/lib/src/log_view.dart', 'CorvaneLogLevel.warning =>', 'CorvaneLogLevel.warn =>',
   /CorvaneLogLevel has no "warn"/],
  ['members', 'example/lib/src/log_view.dart', /CorvaneLogLevel\.warning =>.*/, '',
   /no case CorvaneLogLevel\.warning/],
  ['members', 'example/lib/src/recorder.dart', 'case ForeignFile _:', '',
   /no case ForeignFile/],
  ['members', 'example/lib/src/capture_list.dart', 'capture.isTorn', 'capture.torn',
   /FoundCapture has no "torn"/],
  ['members', 'example/lib/main.dart', 'widget.recorder.stop()', 'widget.recorder.halt()',
   /Recorder has no "halt"/],
  ['members', 'example/lib/src/recorder_page.dart', 'recorder.problem', 'recorder.problems',
   /Recorder has no "problems"/],
  ['members', 'example/lib/src/recorder.dart', 'error.message', 'error.text',
   /CorvaneException has no "text"/],
  ['members', 'test/capture_sink_test.dart', 'sink.close()', 'sink.end()',
   /CaptureSink has no "end"/],
  ['members', 'test/corvane_test.dart', 'corvane.append(pcm: pcm)', 'corvane.append(pcm)',
   /append takes 0 arguments, not 1/],
  ['members', 'lib/src/corvane.dart', '/// await microphone.pipe(CaptureSink());',
   '/// await microphone.pipe(CaptureSink(1));', /CaptureSink takes 0 arguments/],
  ['members', 'README.md', 'corvane.start(', 'corvane.begin(',
   /README.*Corvane has no "begin"/],
  ['members', 'README.md', 'capturePath:', 'file:', /README.*(wants|has no parameter)/],

  ['names', 'lib/src/capture_recovery.dart', 'return resumePath(', 'return resumeFile(',
   /"resumeFile" is unknown/],
  ['names', 'lib/src/capture_sink.dart', "import 'dart:typed_data';\n", '',
   /"Uint8List" is unknown/],
  ['names', 'lib/src/messages.dart', "import 'corvane_log.dart';\n", '',
   /"CorvaneLogLine" is unknown/],
  ['names', 'lib/src/capture_sink.dart', 'Completer<void>()', 'Completor<void>()',
   /"Completor" is unknown/],
  ['names', 'lib/corvane.dart', 'show CaptureSink', 'show CaptureSinks',
   /has no "CaptureSinks"/],
  ['names', 'lib/corvane.dart', 'FoundCapture, NoCapture', 'NoCapture',
   /"FoundCapture" is unknown/],
  ['names', 'example/lib/src/level_meter.dart', 'import ', "import 'dart:io';\nimport ",
   /dart:io is imported and not used/],

  ['package', 'pubspec.yaml', 'CorvanePlugin', 'CorvanesPlugin', /does not declare/],
  ['package', 'pubspec.yaml', 'version: 0.1.0', 'version: 0.1.1', /0\.1\.1/],
  ['package', 'README.md', '.pipe(', '.forEach(', /no whole program/],
];

// Returns what was tried (a count) and what went unseen (lines of text).
export function selfTest(texts) {
  const faults = [];
  for (const [name, path, there, instead, expected] of kBreaks) {
    const text = texts.get(path) ?? '';
    const broken = text.replaceAll(there instanceof RegExp
      ? new RegExp(there.source, 'g') : there, () => instead);
    const what = `${name}: ${path}, ${there}`;
    if (broken === text) {
      faults.push(`${what}: this is not there to be broken`);
      continue;
    }
    const found = allChecks[name](new Map([...texts, [path, broken]])).faults;
    if (!found.some(fault => expected.test(fault))) {
      faults.push(`${what}: went unseen; said was: ${found.join('; ') || 'nothing'}`);
    }
  }
  return {count: kBreaks.length, faults};
}
