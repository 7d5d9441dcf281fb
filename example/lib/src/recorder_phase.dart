/// What a recorder is doing.
enum RecorderPhase {
  /// Nothing is being recorded.
  idle,

  /// Microphone and capture are being opened.
  starting,

  /// Sound goes into the capture.
  recording,

  /// The microphone is open, but what it delivers is thrown away.
  paused,

  /// The capture is being sealed.
  stopping,
}
