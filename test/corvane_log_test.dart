import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

const EventChannel _channel = EventChannel('com.velka.corvane/log');

void main() {
  TestWidgetsFlutterBinding.ensureInitialized();
  final TestDefaultBinaryMessenger messenger =
      TestDefaultBinaryMessengerBinding.instance.defaultBinaryMessenger;

  test('every listener gets every line, with its level', () async {
    messenger.setMockStreamHandler(
      _channel,
      MockStreamHandler.inline(
        onListen: (Object? arguments, MockStreamHandlerEventSink events) {
          for (final CorvaneLogLevel level in CorvaneLogLevel.values) {
            events.success(<String, Object>{
              'level': level.wireName,
              'message': 'a ${level.wireName}',
            });
          }
        },
      ),
    );
    addTearDown(() => messenger.setMockStreamHandler(_channel, null));

    final Stream<CorvaneLogLine> log = const Corvane().log;
    expect(log.isBroadcast, isTrue);
    final Future<List<CorvaneLogLine>> first = log.take(3).toList();
    final Future<List<CorvaneLogLine>> second = log.take(3).toList();
    for (final List<CorvaneLogLine> lines in <List<CorvaneLogLine>>[
      await first,
      await second,
    ]) {
      expect(
        lines.map<CorvaneLogLevel>((CorvaneLogLine line) => line.level),
        CorvaneLogLevel.values,
      );
      expect(lines.last.message, 'a error');
    }
  });
}
