import 'package:flutter/foundation.dart' show immutable;

/// What became of a capture that was sealed: it is repaired, durable and
/// verified to hold at least one whole frame.
@immutable
class CaptureResult {
  /// Creates a result, as tests of an application may want to.
  const CaptureResult({
    required this.path,
    required this.duration,
    required this.bytes,
    required this.sourceDuration,
    required this.droppedAppendBytes,
  });

  /// The capture's path, exactly as it was given to the plugin.
  final String path;

  /// The duration of all whole frames, in whole milliseconds.
  ///
  /// Each start, resumed file and pause adds one frame of 1024 samples in which
  /// none of your audio lies. In a file of several rates this is an estimate.
  final Duration duration;

  /// The size of the file after sealing.
  final int bytes;

  /// The same as [duration]: a capture is its own deliverable.
  final Duration sourceDuration;

  /// The bytes of PCM that were appended while the take was paused, and thrown
  /// away.
  final int droppedAppendBytes;

  @override
  bool operator ==(Object other) =>
      other is CaptureResult &&
      other.path == path &&
      other.duration == duration &&
      other.bytes == bytes &&
      other.sourceDuration == sourceDuration &&
      other.droppedAppendBytes == droppedAppendBytes;

  @override
  int get hashCode =>
      Object.hash(path, duration, bytes, sourceDuration, droppedAppendBytes);

  @override
  String toString() => 'CaptureResult(path: $path, duration: $duration, '
      'bytes: $bytes, sourceDuration: $sourceDuration, '
      'droppedAppendBytes: $droppedAppendBytes)';
}
