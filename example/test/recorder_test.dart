import 'dart:async';
import 'dart:io';

import 'package:corvane_example/src/microphone.dart';
import 'package:corvane_example/src/recorder.dart';
import 'package:corvane_example/src/recorder_phase.dart';
import 'package:corvane_example/src/take_store.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import '../../test/fake_plugin.dart';

const EventChannel _logChannel = EventChannel('com.velka.corvane/log');

class _FakeMicrophone implements Microphone {
  final StreamController<Uint8List> sound = StreamController<Uint8List>();

  @override
  Stream<Uint8List> get pcm => sound.stream;

  @override
  void close() => unawaited(sound.close());
}

void main() {
  late FakePlugin plugin;
  late TakeStore store;
  late _FakeMicrophone microphone;
  late Recorder recorder;
  int logsCancelled = 0;

  setUp(() {
    plugin = FakePlugin();
    plugin.answers['stop'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
    final TestDefaultBinaryMessenger messenger =
        TestDefaultBinaryMessengerBinding.instance.defaultBinaryMessenger;
    messenger.setMockStreamHandler(
      _logChannel,
      MockStreamHandler.inline(
        onListen: (Object? arguments, MockStreamHandlerEventSink events) {},
        onCancel: (Object? arguments) => logsCancelled++,
      ),
    );
    addTearDown(() => messenger.setMockStreamHandler(_logChannel, null));
    final Directory folder = Directory.systemTemp.createTempSync('corvane');
    addTearDown(() => folder.deleteSync(recursive: true));
    store = TakeStore(folder: folder);
    microphone = _FakeMicrophone();
    recorder = Recorder(
      store: store,
      openMicrophone: ({
        required int sampleRate,
        required int channels,
      }) async {
        return microphone;
      },
    );
  });

  // Completes when the recorder has entered [phase].
  Future<void> reached(RecorderPhase phase) {
    final Completer<void> there = Completer<void>();
    recorder.addListener(() {
      if (recorder.phase == phase && !there.isCompleted) {
        there.complete();
      }
    });
    return there.future;
  }

  // A path below a file, at which nobody can tell what there is.
  Future<String> notePathThatCannotBeLookedAt() async {
    final String file = '${store.folder.path}/file';
    File(file).writeAsStringSync('no folder');
    await store.noteDown('$file/take.aac');
    return '$file/take.aac';
  }

  test('a take that cannot be looked at is never forgotten', () async {
    final String path = await notePathThatCannotBeLookedAt();
    await recorder.open();
    expect(recorder.problem, contains(path));
    expect(await store.unfinished(), <String>[path]);

    final Future<void> recording = reached(RecorderPhase.recording);
    final Future<void> take = recorder.start();
    await recording;
    expect(await store.unfinished(), hasLength(2));
    await recorder.stop();
    await take;
    expect(await store.unfinished(), <String>[path]);
    recorder.dispose();
  });

  test('a capture without a whole frame is not offered', () async {
    final String path = '${store.folder.path}/take.aac';
    File(path).writeAsBytesSync(<int>[0xFF, 0xF1, 0x4C, 0x40, 0x15, 0x7F, 0]);
    await store.noteDown(path);
    await recorder.open();
    expect(recorder.interrupted, isEmpty);
    expect(await store.unfinished(), isEmpty);
    recorder.dispose();
  });

  test('nor is one that was stopped before it had one', () async {
    plugin.fail('stop', 'VERIFY_FAILED');
    final Future<void> recording = reached(RecorderPhase.recording);
    final Future<void> take = recorder.start();
    await recording;
    await recorder.stop();
    await take;
    expect(recorder.problem, 'no');
    expect(await store.unfinished(), isEmpty);
    recorder.dispose();
  });

  test('a seal that fails hides nothing of what went before it', () async {
    plugin.fail('append', 'ENCODE_FAILED', message: 'first');
    plugin.fail('stop', 'FINALIZE_FAILED', message: 'second');
    final Future<void> recording = reached(RecorderPhase.recording);
    final Future<void> take = recorder.start();
    await recording;
    microphone.sound.add(Uint8List(4));
    await take;
    expect(recorder.problem, 'first\nsecond');
    expect(await store.unfinished(), hasLength(1));
    recorder.dispose();
  });

  test('a recorder that is disposed of no longer listens to the log', () async {
    await recorder.open();
    final int before = logsCancelled;
    recorder.dispose();
    await Future<void>.delayed(Duration.zero);
    expect(logsCancelled, before + 1);
  });
}
