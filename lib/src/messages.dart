import 'package:flutter/services.dart' show PlatformException;

import 'capture_result.dart';
import 'corvane_exception.dart';
import 'corvane_log.dart';

/// The result in the map that `stop` and `finalizePath` answer with.
CaptureResult decodeResult(Map<String, Object?> map) {
  return CaptureResult(
    path: map['path']! as String,
    duration: Duration(milliseconds: map['durationMs']! as int),
    bytes: map['bytes']! as int,
    sourceDuration: Duration(milliseconds: map['sourceDurationMs']! as int),
    droppedAppendBytes: map['droppedAppendBytes']! as int,
  );
}

/// The plugin's error in [error], or null when its code is none of the
/// plugin's: then something else on the channel has failed.
CorvaneException? decodeError(PlatformException error) {
  final CorvaneErrorCode? code = _errorCodeOf(error.code);
  if (code == null) {
    return null;
  }
  final Object? details = error.details;
  final Map<Object?, Object?> map =
      details is Map<Object?, Object?> ? details : const <Object?, Object?>{};
  return CorvaneException(
    code: code,
    message: error.message ?? '',
    domain: map['domain'] as String?,
    nativeCode: map['code'] as int?,
    path: map['path'] as String?,
  );
}

/// The log line in an event of the log channel.
CorvaneLogLine decodeLogLine(Object? event) {
  final Map<Object?, Object?> map = event! as Map<Object?, Object?>;
  return CorvaneLogLine(
    level: _logLevelOf(map['level']! as String),
    message: map['message']! as String,
  );
}

CorvaneErrorCode? _errorCodeOf(String wireName) {
  for (final CorvaneErrorCode code in CorvaneErrorCode.values) {
    if (code.wireName == wireName) {
      return code;
    }
  }
  return null;
}

// A level that a newer plugin may have is shown rather than dropped.
CorvaneLogLevel _logLevelOf(String wireName) {
  for (final CorvaneLogLevel level in CorvaneLogLevel.values) {
    if (level.wireName == wireName) {
      return level;
    }
  }
  return CorvaneLogLevel.warning;
}
