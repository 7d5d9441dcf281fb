import 'package:flutter/foundation.dart' show immutable;

/// Why a call failed.
enum CorvaneErrorCode {
  /// An argument is missing, of the wrong type or of a value that is refused.
  invalidArgs('INVALID_ARGS'),

  /// An ADTS file cannot carry this sample rate or number of channels.
  unsupportedFormat('UNSUPPORTED_FORMAT'),

  /// There is no open capture to append to, or to stop.
  notRecording('NOT_RECORDING'),

  /// The encoder could not be set up, or has failed. The capture stays open.
  encodeFailed('ENCODE_FAILED'),

  /// A system call on a capture file has failed; the disk may be full.
  ///
  /// When an append fails so, the take should be stopped at once: the frame
  /// that failed may be in the file by half, and would hide frames behind it.
  /// A `CaptureSink` does that by itself.
  writeFailed('WRITE_FAILED'),

  /// The file to work on is not there.
  captureMissing('CAPTURE_MISSING'),

  /// A file could not be finished. It is still there, as far as it was written.
  finalizeFailed('FINALIZE_FAILED'),

  /// A capture that was sealed holds no whole frame. It is still there.
  verifyFailed('VERIFY_FAILED'),

  /// The call has failed in a way that is none of the plugin's: there is no
  /// plugin on this platform, or it is of another version.
  unknown('UNKNOWN');

  const CorvaneErrorCode(this.wireName);

  /// The code as it travels on the channel; that of [unknown] never does.
  final String wireName;
}

/// A call to the plugin has failed.
@immutable
class CorvaneException implements Exception {
  /// Creates an exception, as tests of an application may want to.
  const CorvaneException({
    required this.code,
    required this.message,
    this.domain,
    this.nativeCode,
    this.path,
  });

  /// The [domain] of a [nativeCode] that is an errno value.
  static const String errnoDomain = 'errno';

  /// The [domain] of a [nativeCode] that is a negative number of libav's.
  static const String ffmpegDomain = 'ffmpeg';

  /// What kind of failure this is.
  final CorvaneErrorCode code;

  /// What happened, in words for a person.
  final String message;

  /// Where [nativeCode] comes from: [errnoDomain], [ffmpegDomain] or null.
  final String? domain;

  /// The number of the failure in its [domain]; null when there is no domain.
  final int? nativeCode;

  /// The file concerned; null when there is none.
  final String? path;

  @override
  String toString() {
    final String native = domain == null ? '' : ' ($domain $nativeCode)';
    return 'CorvaneException(${code.wireName}, $message$native)';
  }
}
