import 'package:flutter/services.dart'
    show MissingPluginException, PlatformException;

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

/// What [error] says; of an error that is none of the plugin's, its own words.
CorvaneException decodeError(PlatformException error) {
  final CorvaneErrorCode? code = _errorCodeOf(error.code);
  final String message = error.message ?? '';
  if (code == null) {
    return CorvaneException(
      code: CorvaneErrorCode.unknown,
      message: '${error.code}: $message',
    );
  }
  final Object? details = error.details;
  final Map<Object?, Object?> map =
      details is Map<Object?, Object?> ? details : const <Object?, Object?>{};
  return CorvaneException(
    code: code,
    message: message,
    domain: map['domain'] as String?,
    nativeCode: map['code'] as int?,
    path: map['path'] as String?,
  );
}

/// What a call says that nobody has answered.
CorvaneException decodeMissingPlugin(MissingPluginException error) {
  return CorvaneException(
    code: CorvaneErrorCode.unknown,
    message: error.message ?? 'There is no plugin to answer.',
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
