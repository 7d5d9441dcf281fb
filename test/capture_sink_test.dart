import 'dart:async';

import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import 'fake_plugin.dart';

final Uint8List _chunk = Uint8List(4);

// Delivers its first event before anyone holds its subscription.
class _EagerStream extends Stream<Uint8List> {
  _EagerStream(this._rest);

  final Stream<Uint8List> _rest;

  @override
  StreamSubscription<Uint8List> listen(
    void Function(Uint8List event)? onData, {
    Function? onError,
    void Function()? onDone,
    bool? cancelOnError,
  }) {
    onData?.call(_chunk);
    return _rest.listen(onData, onError: onError, onDone: onDone);
  }
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
    final List<Completer<Object?>> waiting = plugin.holdBack('append');
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

  test('so it is while too many bytes are', () async {
    final List<Completer<Object?>> waiting = plugin.holdBack('append');
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink(maxUnansweredBytes: 7);
    final Future<void> added = sink.addStream(microphone.stream);
    for (int i = 0; i < 3; i++) {
      microphone.add(_chunk);
    }
    await _emptyEventQueue();
    expect(waiting, hasLength(2));
    expect(microphone.isPaused, isTrue);

    waiting.first.complete(null);
    await _emptyEventQueue();
    expect(waiting, hasLength(3));

    waiting[1].complete(null);
    waiting[2].complete(null);
    unawaited(microphone.close());
    await added;
    await sink.close();
  });

  test('64 appends and half a MiB may be unanswered by default', () {
    expect(CaptureSink().maxUnanswered, 64);
    expect(CaptureSink().maxUnansweredBytes, 524288);
  });

  test('a stream that delivers before it is held is held up as well', () async {
    final List<Completer<Object?>> waiting = plugin.holdBack('append');
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink(maxUnanswered: 1);
    final Future<void> added = sink.addStream(_EagerStream(microphone.stream));
    expect(microphone.isPaused, isTrue);

    waiting.single.complete(null);
    await _emptyEventQueue();
    expect(microphone.isPaused, isFalse);
    await sink.close();
    await added;
  });

  test('a stream that refuses a listener does not keep a take open', () async {
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final StreamSubscription<Uint8List> first = microphone.stream.listen(null);
    final CaptureSink sink = CaptureSink();
    final Future<void> refusal =
        expectLater(sink.addStream(microphone.stream), throwsStateError);
    final CaptureResult result = await sink.close();
    await refusal;
    expect(result.bytes, 12061);
    expect(plugin.methods, <String>['stop']);
    await first.cancel();
  });

  test('a failed write ends the pipe and stops the take, once', () async {
    plugin.fail('append', 'WRITE_FAILED');
    final StreamController<Uint8List> microphone =
        StreamController<Uint8List>();
    final CaptureSink sink = CaptureSink();
    final Future<void> failure = expectLater(
        microphone.stream.pipe(sink), failsWith(CorvaneErrorCode.writeFailed));
    microphone.add(_chunk);
    microphone.add(_chunk);
    await failure;
    expect(microphone.hasListener, isFalse);
    expect(plugin.methods.last, 'stop');

    final CaptureResult saved = await sink.close();
    expect(saved.bytes, 12061);
    expect(plugin.count('stop'), 1);
  });

  test('a stop that fails behind a failed write is told by close', () async {
    plugin.fail('append', 'WRITE_FAILED');
    plugin.fail('stop', 'FINALIZE_FAILED');
    final CaptureSink sink = CaptureSink();
    await expectLater(
      sink.addStream(Stream<Uint8List>.value(_chunk)),
      failsWith(CorvaneErrorCode.writeFailed),
    );
    await expectLater(sink.close(), failsWith(CorvaneErrorCode.finalizeFailed));
  });

  test('another error ends the pipe and leaves the take open', () async {
    plugin.fail('append', 'ENCODE_FAILED');
    final CaptureSink sink = CaptureSink();
    await expectLater(
      Stream<Uint8List>.value(_chunk).pipe(sink),
      failsWith(CorvaneErrorCode.encodeFailed),
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
