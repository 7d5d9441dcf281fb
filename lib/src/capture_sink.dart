import 'dart:async';
import 'dart:typed_data';

import 'capture_result.dart';
import 'corvane.dart';
import 'corvane_exception.dart';

/// What a microphone's stream is piped into while a take is open.
///
/// ```dart
/// await corvane.start(capturePath: path, sampleRate: 48000, channels: 1);
/// final CaptureSink sink = CaptureSink();
/// await microphone.pipe(sink);
/// final CaptureResult result = await sink.close();
/// ```
///
/// Each event of the stream is one append. At most [maxUnanswered] of them wait
/// for their answers; then the stream is paused, since the plugin's own queue
/// has no bound. A stream that comes from outside of Dart, a child process say,
/// holds its sender up by that.
///
/// When the stream ends, so does the take: `pipe` calls [close], which seals
/// the capture. The first error ends the stream too, see [addStream].
class CaptureSink implements StreamConsumer<Uint8List> {
  /// Creates the sink of one take, which [corvane] has started or resumed.
  CaptureSink({
    this.corvane = const Corvane(),
    this.maxUnanswered = defaultMaxUnanswered,
  }) : assert(maxUnanswered > 0, 'Without an append there is no answer.');

  /// How many appends may wait for their answers when nothing else is said.
  static const int defaultMaxUnanswered = 64;

  /// The access to the plugin.
  final Corvane corvane;

  /// How many appends may wait for their answers; at least 1.
  final int maxUnanswered;

  _Pipe? _pipe;
  Future<CaptureResult>? _result;

  /// Appends every event of [stream], and completes when the last one is
  /// answered. The take then stays open: another stream may follow.
  ///
  /// The first error, be it an append's or the stream's own, ends this: the
  /// subscription is cancelled, what has been sent is waited for, and the
  /// future completes with that error. An append that fails with
  /// [CorvaneErrorCode.writeFailed] stops the take as well, because frames that
  /// are written behind a torn one may not be found again; [close] then tells
  /// what was saved. After any other error the take stays open until [close].
  @override
  Future<void> addStream(Stream<Uint8List> stream) async {
    if (_result != null) {
      throw StateError('The take has been stopped.');
    }
    if (_pipe != null) {
      throw StateError('Another stream is being added.');
    }
    final _Pipe pipe = _Pipe(corvane, maxUnanswered);
    _pipe = pipe;
    try {
      await pipe.add(stream);
    } on CorvaneException catch (error) {
      if (error.code == CorvaneErrorCode.writeFailed) {
        await _stopAfterFailedWrite();
      }
      rethrow;
    } finally {
      _pipe = null;
    }
  }

  /// Ends the take: stops listening to a stream that is still being added,
  /// waits for the answers, and seals the capture.
  ///
  /// However often it is called, the take is stopped once, and every call has
  /// the same result.
  @override
  Future<CaptureResult> close() => _result ??= _closeOnce();

  Future<CaptureResult> _closeOnce() async {
    await _pipe?.end();
    return corvane.stop();
  }

  // What becomes of the stop is told by close(); here the failed write counts.
  Future<void> _stopAfterFailedWrite() async {
    try {
      await (_result ??= corvane.stop());
    } on Exception {
      return;
    }
  }
}

// One stream on its way into the plugin.
class _Pipe {
  _Pipe(this._corvane, this._maxUnanswered);

  final Corvane _corvane;
  final int _maxUnanswered;
  final Completer<void> _answered = Completer<void>();
  late final StreamSubscription<Uint8List> _subscription;
  bool _ended = false;
  int _unanswered = 0;
  Object? _error;
  StackTrace? _stackTrace;

  // Completes when the stream has ended and every append is answered; with the
  // first error, if there was one.
  Future<void> add(Stream<Uint8List> stream) async {
    _subscription = stream.listen(_append, onError: _fail, onDone: _end);
    await _answered.future;
    final Object? error = _error;
    if (error != null) {
      Error.throwWithStackTrace(error, _stackTrace!);
    }
  }

  // Takes no more from the stream. The future never completes with an error.
  Future<void> end() {
    _end();
    return _answered.future;
  }

  Future<void> _append(Uint8List chunk) async {
    _unanswered++;
    if (_unanswered == _maxUnanswered) {
      _subscription.pause();
    }
    try {
      await _corvane.append(pcm: chunk);
    } catch (error, stackTrace) {
      _fail(error, stackTrace);
    }
    _unanswered--;
    if (_ended) {
      _completeWhenAnswered();
    } else if (_unanswered == _maxUnanswered - 1) {
      _subscription.resume();
    }
  }

  // The first error is kept. Only a failed write behind it takes its place, for
  // that one must stop the take.
  void _fail(Object error, StackTrace stackTrace) {
    if (_error == null || (!_isFailedWrite(_error) && _isFailedWrite(error))) {
      _error = error;
      _stackTrace = stackTrace;
    }
    _end();
  }

  // Nobody waits for the cancelling, as a source may take its time over it.
  void _end() {
    if (!_ended) {
      _ended = true;
      _subscription.cancel().ignore();
    }
    _completeWhenAnswered();
  }

  void _completeWhenAnswered() {
    if (_unanswered == 0 && !_answered.isCompleted) {
      _answered.complete();
    }
  }
}

bool _isFailedWrite(Object? error) =>
    error is CorvaneException && error.code == CorvaneErrorCode.writeFailed;
