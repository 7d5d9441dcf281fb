import 'dart:async';
import 'dart:typed_data';

import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import 'fake_plugin.dart';

final Uint8List _chunk = Uint8List(4);

Matcher _failsWith(CorvaneErrorCode code) {
  return throwsA(isA<CorvaneException>()
      .having((CorvaneException error) => error.code, 'code', code));
}

// Lets everything happen that waits for nothing but its turn.
Future<void> _emptyEventQueue() async {
  for (int turn = 0; turn < 20; turn++) {
    await Future<void>.delayed(Duration.zero);
  }
}

void main() {
  late FakePlugin plugin;

  setUp(() {
    plugin = FakePlugin();
    plugin.answers['stop'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
  });

  test('the end of the stream seals the take', () async {
    final CaptureSink sink = CaptureSink();
    await Stream<Uint8List>.fromIterable(<Uint8List>[_chunk, _chunk])
        .pipe(sink);
    final CaptureResult result = await sink.close();
    expect(result.bytes, 12061);
    expect(plugin.methods, <String>['append', 'append', 'stop']);
  });

  test('streams can follow each other in one take', () async {
    final CaptureSink sink = CaptureSink();
    await sink.addStream(Stream<Uint8List>.value(_chunk));
    await sink.addStream(Stream<Uint8List>.value(_chunk));
    expect(plugin.methods, <String>['append', 'append']);
    await sink.close();
    expect(plugin.methods.last, 'stop');
  });

  test('the stream is paused while too many appends are unanswered', () async {
    final List<Completer<Object?>> waiting = <Completer<Object?>>[];
    plugin.answers['append'] = (MethodCall call) {
      final Completer<Object?> answer = Completer<Object?>();
      waiting.add(answer);
      return answer.future;
    };
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink(maxUnanswered: 2);
    final Future<void> added = sink.addStream(microphone.stream);
    for (int i = 0; i < 5; i++) {
      microphone.add(_chunk);
    }
    await _emptyEventQueue();
    expect(waiting, hasLength(2));
    expect(microphone.isPaused, isTrue);

    waiting.first.complete(null);
    await _emptyEventQueue();
    expect(waiting, hasLength(3));
    expect(microphone.isPaused, isTrue);

    plugin.answers.remove('append');
    waiting[1].complete(null);
    waiting[2].complete(null);
    unawaited(microphone.close());
    await added;
    expect(plugin.methods, hasLength(5));
  });

  test('64 appends may be unanswered when nothing else is said', () {
    expect(CaptureSink().maxUnanswered, 64);
  });

  test('a failed write ends the pipe and stops the take, once', () async {
    plugin.fail('append', 'WRITE_FAILED');
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink();
    final Future<void> failure = expectLater(
        microphone.stream.pipe(sink), _failsWith(CorvaneErrorCode.writeFailed));
    microphone.add(_chunk);
    microphone.add(_chunk);
    await failure;
    expect(microphone.hasListener, isFalse);
    expect(plugin.methods.last, 'stop');

    final CaptureResult saved = await sink.close();
    expect(saved.bytes, 12061);
    expect(
      plugin.methods.where((String method) => method == 'stop'),
      hasLength(1),
    );
  });

  test('a stop that fails behind a failed write is told by close', () async {
    plugin.fail('append', 'WRITE_FAILED');
    plugin.fail('stop', 'FINALIZE_FAILED');
    final CaptureSink sink = CaptureSink();
    await expectLater(
      sink.addStream(Stream<Uint8List>.value(_chunk)),
      _failsWith(CorvaneErrorCode.writeFailed),
    );
    await expectLater(
        sink.close(), _failsWith(CorvaneErrorCode.finalizeFailed));
  });

  test('another error ends the pipe and leaves the take open', () async {
    plugin.fail('append', 'ENCODE_FAILED');
    final CaptureSink sink = CaptureSink();
    await expectLater(
      Stream<Uint8List>.value(_chunk).pipe(sink),
      _failsWith(CorvaneErrorCode.encodeFailed),
    );
    expect(plugin.methods, <String>['append']);
    await sink.close();
    expect(plugin.methods, <String>['append', 'stop']);
  });

  test("the stream's own error ends the pipe", () async {
    final CaptureSink sink = CaptureSink();
    await expectLater(
      sink.addStream(Stream<Uint8List>.error(StateError('unplugged'))),
      throwsStateError,
    );
    expect(plugin.methods, isEmpty);
  });

  test('close ends a stream that is still being added', () async {
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink();
    final Future<void> added = sink.addStream(microphone.stream);
    microphone.add(_chunk);
    await _emptyEventQueue();
    await sink.close();
    await added;
    expect(microphone.hasListener, isFalse);
    expect(plugin.methods, <String>['append', 'stop']);
  });

  test('two streams at once, or one behind the end, are refused', () async {
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink();
    final Future<void> added = sink.addStream(microphone.stream);
    await expectLater(
      sink.addStream(Stream<Uint8List>.value(_chunk)),
      throwsStateError,
    );
    await sink.close();
    await added;
    await expectLater(
      sink.addStream(Stream<Uint8List>.value(_chunk)),
      throwsStateError,
    );
  });
}
