import 'dart:async';
import 'dart:typed_data';

import 'corvane_exception.dart';

/// Whether [error] says that a write on the capture has failed, which must end
/// the take.
bool isFailedWrite(Object? error) =>
    error is CorvaneException && error.code == CorvaneErrorCode.writeFailed;

/// One stream on its way into the plugin.
class CapturePipe {
  /// Creates a pipe into [append], with at most [maxUnanswered] calls of it and
  /// [maxUnansweredBytes] waiting for their answers.
  CapturePipe({
    required this.append,
    required this.maxUnanswered,
    required this.maxUnansweredBytes,
  });

  /// Sends one event of the stream.
  final Future<void> Function(Uint8List chunk) append;

  /// How many appends may wait for their answers.
  final int maxUnanswered;

  /// How many bytes may. The append that reaches this is still sent.
  final int maxUnansweredBytes;

  final Completer<void> _answered = Completer<void>();

  // Null while the stream is being listened to, and when that has failed.
  StreamSubscription<Uint8List>? _subscription;
  bool _hasEnded = false;
  bool _isHeldUp = false;
  int _unanswered = 0;
  int _unansweredBytes = 0;
  AsyncError? _failure;

  /// Takes every event of [stream], and completes when it has ended and every
  /// append is answered; with the first error, or null when there was none.
  Future<AsyncError?> add(Stream<Uint8List> stream) async {
    try {
      _subscribe(stream);
    } catch (error, stackTrace) {
      _fail(error, stackTrace);
    }
    await _answered.future;
    return _failure;
  }

  /// Takes no more from the stream, and completes when every append is
  /// answered. Never fails.
  Future<void> end() {
    _end();
    return _answered.future;
  }

  // A stream may deliver, fail or end before `listen` returns.
  void _subscribe(Stream<Uint8List> stream) {
    final StreamSubscription<Uint8List> subscription =
        stream.listen(_send, onError: _fail, onDone: _end);
    _subscription = subscription;
    if (_hasEnded) {
      subscription.cancel().ignore();
    } else if (_isHeldUp) {
      subscription.pause();
    }
  }

  Future<void> _send(Uint8List chunk) async {
    final int bytes = chunk.length;
    _unanswered++;
    _unansweredBytes += bytes;
    _holdUpOrLetGo();
    try {
      await append(chunk);
    } catch (error, stackTrace) {
      _fail(error, stackTrace);
    }
    _unanswered--;
    _unansweredBytes -= bytes;
    _holdUpOrLetGo();
    if (_hasEnded) {
      _completeWhenAnswered();
    }
  }

  void _holdUpOrLetGo() {
    final bool isFull =
        _unanswered >= maxUnanswered || _unansweredBytes >= maxUnansweredBytes;
    if (_hasEnded || isFull == _isHeldUp) {
      return;
    }
    _isHeldUp = isFull;
    if (isFull) {
      _subscription?.pause();
    } else {
      _subscription?.resume();
    }
  }

  // The first error is kept. Only a failed write behind it takes its place, for
  // that one must stop the take.
  void _fail(Object error, StackTrace stackTrace) {
    final AsyncError? failure = _failure;
    if (failure == null ||
        (!isFailedWrite(failure.error) && isFailedWrite(error))) {
      _failure = AsyncError(error, stackTrace);
    }
    _end();
  }

  // Nobody waits for the cancelling, as a source may take its time over it.
  void _end() {
    if (!_hasEnded) {
      _hasEnded = true;
      _subscription?.cancel().ignore();
    }
    _completeWhenAnswered();
  }

  void _completeWhenAnswered() {
    if (_unanswered == 0 && !_answered.isCompleted) {
      _answered.complete();
    }
  }
}
