import 'dart:typed_data';

import 'package:flutter/services.dart'
    show
        EventChannel,
        MethodChannel,
        MissingPluginException,
        PlatformException;

import 'capture_result.dart';
import 'corvane_exception.dart';
import 'corvane_log.dart';
import 'messages.dart';

/// Records PCM audio into AAC files that survive a crash.
///
/// At most one capture is open at a time, for the whole application: every
/// [Corvane] speaks to the same plugin. The plugin works its calls off one
/// after the other, in the order in which they are made, and on a thread of its
/// own, so that nothing here blocks the user interface.
///
/// ```dart
/// const Corvane corvane = Corvane();
/// await corvane.start(capturePath: path, sampleRate: 48000, channels: 1);
/// await microphone.pipe(CaptureSink());
/// ```
///
/// Every call that fails throws a [CorvaneException], also one that no plugin
/// answers: [CorvaneErrorCode.unknown].
class Corvane {
  /// Creates an access to the plugin. It holds nothing and costs nothing.
  const Corvane();

  /// The bit rate in bit/s of a capture for which none is given.
  static const int defaultBitRate = 64000;

  static const MethodChannel _channel = MethodChannel('com.velka.corvane');

  static const EventChannel _logChannel = EventChannel('com.velka.corvane/log');

  // One stream for everybody: a second one on the same channel would take the
  // events away from the first.
  static final Stream<CorvaneLogLine> _log = _logChannel
      .receiveBroadcastStream()
      .map<CorvaneLogLine>((Object? event) => decodeLogLine(event));

  /// The plugin's log, as a broadcast stream.
  ///
  /// Lines that are logged while nobody listens are not kept. A line that a
  /// call causes arrives before that call's answer.
  Stream<CorvaneLogLine> get log => _log;

  /// Begins a take in a new file at [capturePath].
  ///
  /// What is not empty at that path is moved aside, never overwritten:
  /// `take.aac` becomes `take.orphan.aac`, then `take.orphan1.aac` and so on.
  /// A capture that is still open is closed first, but not sealed.
  ///
  /// Send an absolute path: a relative one counts from the working directory
  /// of the moment, in each call anew.
  ///
  /// The [sampleRate] in Hz is one of the 13 that ADTS has a number for: 96000,
  /// 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000
  /// or 7350. There are 1 to 6 [channels]; some players refuse a file of 3. The
  /// [bitRate] is in bit/s and above 0.
  Future<void> start({
    required String capturePath,
    required int sampleRate,
    required int channels,
    int bitRate = defaultBitRate,
  }) {
    return _answerOf(_channel.invokeMethod<void>('start', <String, Object>{
      'capturePath': capturePath,
      'sampleRate': sampleRate,
      'channels': channels,
      'bitRate': bitRate,
    }));
  }

  /// Appends [pcm] to the open capture: interleaved signed 16-bit little-endian
  /// samples, cut wherever you like. The buffer may be reused at once.
  ///
  /// Bytes that arrive while the take is paused are counted and thrown away.
  ///
  /// The plugin's queue has no bound, so whoever appends has to keep one: a
  /// `CaptureSink` does, flushes, and ends the take at the first failed write.
  Future<void> append({required Uint8List pcm}) {
    return _answerOf(_channel.invokeMethod<void>('append', pcm));
  }

  /// Writes out every whole sample frame that was appended, and ignores what is
  /// appended from here to the next [resume].
  ///
  /// Never fails. A write that goes wrong shows in the [log] alone, as a
  /// warning that begins with "pause drain failed for"; end the take then.
  Future<void> pause() {
    return _answerOf(_channel.invokeMethod<void>('pause'));
  }

  /// Goes on after a [pause]. Never fails, and does nothing when not paused.
  Future<void> resume() {
    return _answerOf(_channel.invokeMethod<void>('resume'));
  }

  /// Ends the take and seals its capture: the rest is written out, the file
  /// made durable, a torn frame at its end cut off, and verified.
  ///
  /// No capture is open afterwards, whether this fails or not, and the file
  /// stays on the disk either way.
  Future<CaptureResult> stop() {
    return _resultOf(_channel.invokeMapMethod<String, Object?>('stop'));
  }

  /// Closes the open capture as [stop] does, but doesn't seal it. The file
  /// stays: nothing in the plugin deletes audio. Never fails.
  Future<void> cancel() {
    return _answerOf(_channel.invokeMethod<void>('cancel'));
  }

  /// Makes durable what is in the file, so that no power cut takes it.
  ///
  /// What the encoder still holds, 46 to 70 ms at 44100 Hz, is not written out.
  /// When it fails, end the take: what lies behind the last good flush may not
  /// be on the disk. A `CaptureSink` flushes, and does that, by itself.
  Future<void> flush() {
    return _answerOf(_channel.invokeMethod<void>('flush'));
  }

  /// Begins a take that goes on in the capture at [capturePath]. A torn frame
  /// at its end is cut off; the new frames go to the file's end: foreign bytes
  /// stay.
  ///
  /// The format is as for [start], and is not compared with what is in the
  /// file: a file of several rates plays, but its duration is a guess.
  /// `CaptureRecovery.look` finds the format of a capture.
  Future<void> resumePath({
    required String capturePath,
    required int sampleRate,
    required int channels,
    int bitRate = defaultBitRate,
  }) {
    return _answerOf(_channel.invokeMethod<void>('resumePath', <String, Object>{
      'capturePath': capturePath,
      'sampleRate': sampleRate,
      'channels': channels,
      'bitRate': bitRate,
    }));
  }

  /// Seals the capture at [capturePath], be it the open one, one that a crash
  /// has left behind, or one that is sealed already.
  ///
  /// An [outputPath] must be the capture's own, since there is nothing to
  /// convert; that is also what it is when left out. The format must be valid,
  /// and is otherwise not used.
  Future<CaptureResult> finalizePath({
    required String capturePath,
    String? outputPath,
    required int sampleRate,
    required int channels,
    int bitRate = defaultBitRate,
  }) {
    return _resultOf(_channel
        .invokeMapMethod<String, Object?>('finalizePath', <String, Object>{
      'capturePath': capturePath,
      'outputPath': outputPath ?? capturePath,
      'sampleRate': sampleRate,
      'channels': channels,
      'bitRate': bitRate,
    }));
  }

  /// Writes a new header over the first 44 bytes of the 16-bit PCM WAV file at
  /// [wavPath], whose recorder died before it could write the sizes.
  ///
  /// It looks at nothing: **any** file loses its first 44 bytes, also one that
  /// is no WAV file. No capture is concerned.
  Future<void> finalizeWavOnly({
    required String wavPath,
    required int sampleRate,
    required int channels,
  }) {
    return _answerOf(
        _channel.invokeMethod<void>('finalizeWavOnly', <String, Object>{
      'wavPath': wavPath,
      'sampleRate': sampleRate,
      'channels': channels,
    }));
  }
}

// The channel's answer, with every error as a CorvaneException.
Future<T> _answerOf<T>(Future<T> answer) async {
  try {
    return await answer;
  } on PlatformException catch (error, stackTrace) {
    Error.throwWithStackTrace(decodeError(error), stackTrace);
  } on MissingPluginException catch (error, stackTrace) {
    Error.throwWithStackTrace(decodeMissingPlugin(error), stackTrace);
  }
}

Future<CaptureResult> _resultOf(Future<Map<String, Object?>?> answer) async {
  final Map<String, Object?>? map = await _answerOf(answer);
  return decodeResult(map!);
}
