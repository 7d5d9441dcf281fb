import 'dart:async';
import 'dart:typed_data';

import 'capture_pipe.dart';
import 'capture_result.dart';
import 'corvane.dart';
import 'corvane_exception.dart';
import 'flush_clock.dart';

/// What a microphone's stream is piped into while a take is open.
///
/// ```dart
/// await corvane.start(capturePath: path, sampleRate: 48000, channels: 1);
/// final CaptureSink sink = CaptureSink();
/// await microphone.pipe(sink);
/// final CaptureResult result = await sink.close();
/// ```
///
/// Each event of the stream is one append. At most [maxUnanswered] of them, and
/// about [maxUnansweredBytes], wait for their answers; then the stream is
/// paused, since the plugin's own queue has no bound. A stream that comes from
/// outside of Dart, a child process say, holds its sender up by that.
///
/// Every [flushEvery] the sink makes durable what was written, so that this is
/// about what a power cut can cost, and not the take.
///
/// When the stream ends, so does the take: `pipe` calls [close], which seals
/// the capture. The first error ends the stream too, see [addStream].
class CaptureSink implements StreamConsumer<Uint8List> {
  /// Creates the sink of one take, which [corvane] has started or resumed.
  CaptureSink({
    this.corvane = const Corvane(),
    this.maxUnanswered = defaultMaxUnanswered,
    this.maxUnansweredBytes = defaultMaxUnansweredBytes,
    this.flushEvery = defaultFlushEvery,
  })  : assert(maxUnanswered > 0, 'Without an append there is no answer.'),
        assert(maxUnansweredBytes > 0, 'Without a byte there is no append.'),
        assert(flushEvery >= Duration.zero, 'Zero is the shortest there is.');

  /// How many appends may wait for their answers when nothing else is said.
  static const int defaultMaxUnanswered = 64;

  /// How many bytes may wait for their answers when nothing else is said: more
  /// than two seconds of 48000 Hz in stereo, which outlasts a slow disk's sync.
  static const int defaultMaxUnansweredBytes = 524288;

  /// The time from one flush to the next when nothing else is said.
  static const Duration defaultFlushEvery = Duration(seconds: 1);

  /// The access to the plugin.
  final Corvane corvane;

  /// How many appends may wait for their answers; at least 1.
  final int maxUnanswered;

  /// How many bytes of PCM may wait for their answers; at least 1. The append
  /// that reaches this is still sent, so one may be larger.
  final int maxUnansweredBytes;

  /// The time from the start of one flush to the start of the next, at least;
  /// [Duration.zero] for no flush at all.
  ///
  /// There are never two flushes at once, none when nothing was written since
  /// the last one, and none is made up for after a suspend. A flush takes its
  /// turn behind the appends before it, and those behind it wait: each costs
  /// one sync of the disk.
  final Duration flushEvery;

  late final FlushClock _clock = FlushClock(
    every: flushEvery,
    flush: corvane.flush,
    onFailure: _onFailedFlush,
  );
  CapturePipe? _pipe;
  bool _isPaused = false;
  AsyncError? _failedFlush; // which addStream tells
  AsyncError? _untoldFlush; // one that failed with no stream being added
  Future<CaptureResult>? _result;

  /// Appends every event of [stream], and completes when the last one is
  /// answered. The take then stays open: another stream may follow.
  ///
  /// The first error, be it an append's or the stream's own, ends this: the
  /// subscription is cancelled, what has been sent is waited for, and the
  /// future completes with that error. An append that fails with
  /// [CorvaneErrorCode.writeFailed] stops the take as well, because frames that
  /// are written behind a torn one may not be found again, and so does a flush
  /// that fails, because what lies behind the last good one may not be on the
  /// disk; [close] then tells what was saved. After any other error the take
  /// stays open until [close].
  @override
  Future<void> addStream(Stream<Uint8List> stream) async {
    if (_result != null) {
      _throwIfAny(_untoldFlush);
      throw StateError('The take has been stopped.');
    }
    if (_pipe != null) {
      throw StateError('Another stream is being added.');
    }
    final CapturePipe pipe = CapturePipe(
      append: _append,
      maxUnanswered: maxUnanswered,
      maxUnansweredBytes: maxUnansweredBytes,
    );
    _pipe = pipe;
    final AsyncError? failure = await pipe.add(stream);
    await _clock.answered;
    _pipe = null;
    if (_failedFlush != null || isFailedWrite(failure?.error)) {
      await _stopAfterFailure();
    }
    _throwIfAny(isFailedWrite(failure?.error) ? failure : _failedFlush);
    _throwIfAny(failure);
  }

  /// Pauses the take, as [Corvane.pause] does. What the stream still delivers
  /// is thrown away until [resume], and asks for no flush.
  Future<void> pause() {
    final Future<void> answer = corvane.pause();
    // A pause writes out what the encoder still held.
    _noteWriting();
    _isPaused = true;
    return answer;
  }

  /// Goes on after a [pause].
  Future<void> resume() {
    _isPaused = false;
    return corvane.resume();
  }

  /// Ends the take: stops listening to a stream that is still being added,
  /// waits for the answers, and seals the capture.
  ///
  /// However often it is called, the take is stopped once, and every call has
  /// the same result. That is the error of a flush that has failed while no
  /// stream was being added, as nobody has heard of it yet; the take was
  /// stopped and sealed then.
  @override
  Future<CaptureResult> close() => _result ??= _closeOnce();

  Future<CaptureResult> _closeOnce() async {
    await _pipe?.end();
    await _clock.end();
    final CaptureResult result = await corvane.stop();
    _throwIfAny(_untoldFlush);
    return result;
  }

  Future<void> _append(Uint8List chunk) {
    final Future<void> answer = corvane.append(pcm: chunk);
    _noteWriting();
    return answer;
  }

  // Behind the call that writes, so that a flush that is due comes after it.
  void _noteWriting() {
    if (!_isPaused) {
      _clock.wrote();
    }
  }

  void _onFailedFlush(Object error, StackTrace stackTrace) {
    final AsyncError failure = AsyncError(error, stackTrace);
    final CapturePipe? pipe = _pipe;
    if (pipe == null) {
      _untoldFlush = failure;
      close().ignore();
    } else {
      _failedFlush = failure;
      pipe.end().ignore();
    }
  }

  // What becomes of the stop is told by close(); here the failure counts.
  Future<void> _stopAfterFailure() async {
    try {
      await close();
    } on Exception {
      return;
    }
  }
}

void _throwIfAny(AsyncError? failure) {
  if (failure != null) {
    Error.throwWithStackTrace(failure.error, failure.stackTrace);
  }
}
