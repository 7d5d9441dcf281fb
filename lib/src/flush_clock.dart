import 'dart:async';

/// Decides when a take is flushed.
///
/// Flushes begin at least [every] apart. There are never two at once, none
/// when nothing was written since the last began, and none is made up for: the
/// time is that of Dart's own timers, which is monotonic, and stands still
/// while the machine is suspended.
class FlushClock {
  /// Creates a clock that stands until something is written. It calls [flush],
  /// and tells its failure to [onFailure], after which it stands for good.
  FlushClock({
    required this.every,
    required this.flush,
    required this.onFailure,
  });

  /// The time from the start of one flush to the start of the next, at least;
  /// there is no flush at all when it is zero.
  final Duration every;

  /// Makes durable what was written.
  final Future<void> Function() flush;

  /// Hears why a flush has failed.
  final void Function(Object error, StackTrace stackTrace) onFailure;

  Timer? _untilNext; // null when a flush is due as soon as there is news
  Future<void>? _flushing;
  bool _hasNews = false;
  bool _hasBegun = false;
  bool _hasEnded = false;

  /// Completes when the flush under way is answered. Never fails.
  Future<void> get answered => _flushing ?? Future<void>.value();

  /// Takes note that something was written, which a flush from now on makes
  /// durable. The first time, the clock starts.
  void wrote() {
    if (every == Duration.zero || _hasEnded) {
      return;
    }
    _hasNews = true;
    if (!_hasBegun) {
      _hasBegun = true;
      _wait();
    }
    _flushIfDue();
  }

  /// Stops the clock, and completes when the flush under way is answered.
  Future<void> end() {
    _hasEnded = true;
    _untilNext?.cancel();
    return answered;
  }

  void _wait() {
    _untilNext = Timer(every, () {
      _untilNext = null;
      _flushIfDue();
    });
  }

  void _flushIfDue() {
    if (_hasNews && !_hasEnded && _untilNext == null && _flushing == null) {
      _hasNews = false;
      _wait();
      _flushing = _flushOnce();
    }
  }

  Future<void> _flushOnce() async {
    try {
      await flush();
    } catch (error, stackTrace) {
      unawaited(end());
      onFailure(error, stackTrace);
    }
    _flushing = null;
    _flushIfDue();
  }
}
