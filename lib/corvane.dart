/// Audio capture to disk that survives crashes, for Flutter applications on
/// Linux.
///
/// A [Corvane] starts and stops takes, a [CaptureSink] is what a microphone's
/// stream is piped into, and [CaptureRecovery] finds out what a crash has left
/// behind.
library;

export 'src/capture_look.dart'
    show CaptureLook, ForeignFile, FoundCapture, NoCapture;
export 'src/capture_recovery.dart' show CaptureRecovery;
export 'src/capture_result.dart' show CaptureResult;
export 'src/capture_sink.dart' show CaptureSink;
export 'src/corvane.dart' show Corvane;
export 'src/corvane_exception.dart' show CorvaneErrorCode, CorvaneException;
export 'src/corvane_log.dart' show CorvaneLogLevel, CorvaneLogLine;
