import 'package:flutter/foundation.dart' show immutable;

/// How much a log line matters.
enum CorvaneLogLevel {
  /// What happens in the ordinary course of a take.
  info('info'),

  /// Something was lost or had to be repaired; the take goes on.
  warning('warning'),

  /// A call has failed. Its caller gets a `CorvaneException` too.
  error('error');

  const CorvaneLogLevel(this.wireName);

  /// The level as it travels on the channel.
  final String wireName;
}

/// One line of the plugin's log.
@immutable
class CorvaneLogLine {
  /// Creates a line, as tests of an application may want to.
  const CorvaneLogLine({required this.level, required this.message});

  /// How much the line matters.
  final CorvaneLogLevel level;

  /// What happened, in words for a person.
  final String message;

  @override
  bool operator ==(Object other) =>
      other is CorvaneLogLine &&
      other.level == level &&
      other.message == message;

  @override
  int get hashCode => Object.hash(level, message);

  @override
  String toString() => '${level.wireName}: $message';
}
