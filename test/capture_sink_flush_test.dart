import 'dart:async';

import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import 'fake_plugin.dart';

final Uint8List _chunk = Uint8List(4);

const Duration _tick = Duration(milliseconds: 1);
const Duration _second = Duration(seconds: 1);

// Widget tests, since their clock is in the test's hands.
void main() {
  late FakePlugin plugin;
  late StreamController<Uint8List> microphone;

  setUp(() {
    plugin = FakePlugin();
    plugin.answers['stop'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
    microphone = StreamController<Uint8List>();
  });

  Future<void> deliver(WidgetTester tester) async {
    microphone.add(_chunk);
    await tester.pump();
  }

  testWidgets('a take is flushed every second', (WidgetTester tester) async {
    final CaptureSink sink = CaptureSink();
    expect(sink.flushEvery, _second);
    final Future<void> added = sink.addStream(microphone.stream);
    await deliver(tester);
    await tester.pump(_second - _tick);
    expect(plugin.count('flush'), 0);
    await tester.pump(_tick);
    expect(plugin.count('flush'), 1);

    await deliver(tester);
    await tester.pump(_second - _tick);
    expect(plugin.count('flush'), 1);
    await tester.pump(_tick);
    expect(plugin.count('flush'), 2);
    await sink.close();
    await added;
  });

  testWidgets('nothing is flushed without news, nor made up for',
      (WidgetTester tester) async {
    final CaptureSink sink = CaptureSink();
    final Future<void> added = sink.addStream(microphone.stream);
    await tester.pump(_second * 10);
    expect(plugin.methods, isEmpty);
    await deliver(tester);
    await tester.pump(_second * 10);
    expect(plugin.methods, <String>['append', 'flush']);

    // It is due, so it follows the append at once, and once.
    await deliver(tester);
    await tester.pump(_second * 10);
    expect(plugin.methods, <String>['append', 'flush', 'append', 'flush']);
    await sink.close();
    await added;
    expect(plugin.methods.last, 'stop');
  });

  testWidgets('a slow flush is never joined by another',
      (WidgetTester tester) async {
    final List<Completer<Object?>> waiting = plugin.holdBack('flush');
    final CaptureSink sink = CaptureSink();
    final Future<void> added = sink.addStream(microphone.stream);
    await deliver(tester);
    await tester.pump(_second);
    await deliver(tester);
    await tester.pump(_second * 3);
    expect(waiting, hasLength(1));

    // The next one is due by then.
    waiting.first.complete(null);
    await tester.pump();
    expect(waiting, hasLength(2));
    waiting.last.complete(null);
    await sink.close();
    await added;
  });

  testWidgets('the end of a stream waits for the flush under way',
      (WidgetTester tester) async {
    final List<Completer<Object?>> waiting = plugin.holdBack('flush');
    final CaptureSink sink = CaptureSink();
    bool isOver = false;
    final Future<void> piped = microphone.stream
        .pipe(sink)
        .then<void>((Object? result) => isOver = true);
    await deliver(tester);
    await tester.pump(_second);
    unawaited(microphone.close());
    await tester.pump();
    expect(plugin.methods, <String>['append', 'flush']);
    expect(isOver, isFalse);

    waiting.single.complete(null);
    await piped;
    expect(plugin.methods, <String>['append', 'flush', 'stop']);
  });

  testWidgets('zero turns the flushes off', (WidgetTester tester) async {
    final CaptureSink sink = CaptureSink(flushEvery: Duration.zero);
    final Future<void> added = sink.addStream(microphone.stream);
    await deliver(tester);
    await tester.pump(_second * 10);
    await sink.close();
    await added;
    expect(plugin.methods, <String>['append', 'stop']);
  });

  testWidgets('a paused take is flushed once more, and then rests',
      (WidgetTester tester) async {
    final CaptureSink sink = CaptureSink();
    final Future<void> added = sink.addStream(microphone.stream);
    await deliver(tester);
    await sink.pause();
    await deliver(tester);
    await tester.pump(_second);
    await deliver(tester);
    await tester.pump(_second * 10);
    expect(plugin.count('flush'), 1);

    await sink.resume();
    await deliver(tester);
    expect(plugin.count('flush'), 2);
    await sink.close();
    await added;
  });

  testWidgets('a flush that fails ends the pipe and stops the take, once',
      (WidgetTester tester) async {
    plugin.fail('flush', 'WRITE_FAILED');
    final CaptureSink sink = CaptureSink();
    final Future<void> failure = expectLater(
        microphone.stream.pipe(sink), failsWith(CorvaneErrorCode.writeFailed));
    await deliver(tester);
    await tester.pump(_second);
    await failure;
    expect(microphone.hasListener, isFalse);
    expect(plugin.methods, <String>['append', 'flush', 'stop']);
    final CaptureResult saved = await sink.close();
    expect(saved.bytes, 12061);
    expect(plugin.count('stop'), 1);
  });

  testWidgets('one that fails between two streams is told afterwards',
      (WidgetTester tester) async {
    plugin.fail('flush', 'WRITE_FAILED');
    final CaptureSink sink = CaptureSink();
    await sink.addStream(Stream<Uint8List>.value(_chunk));
    await tester.pump(_second);
    await tester.pump();
    expect(plugin.methods, <String>['append', 'flush', 'stop']);
    await expectLater(
      sink.addStream(microphone.stream),
      failsWith(CorvaneErrorCode.writeFailed),
    );
    await expectLater(sink.close(), failsWith(CorvaneErrorCode.writeFailed));
    expect(plugin.count('stop'), 1);
  });
}
