import 'package:corvane/corvane.dart';
import 'package:flutter/services.dart';
import 'package:flutter_test/flutter_test.dart';

import 'fake_plugin.dart';

void main() {
  const Corvane corvane = Corvane();
  late FakePlugin plugin;

  setUp(() => plugin = FakePlugin());

  test('start sends the default bit rate', () async {
    await corvane.start(capturePath: '/a.aac', sampleRate: 48000, channels: 2);
    expect(plugin.calls.single.method, 'start');
    expect(plugin.calls.single.arguments, <String, Object>{
      'capturePath': '/a.aac',
      'sampleRate': 48000,
      'channels': 2,
      'bitRate': 64000,
    });
  });

  test('resumePath sends the same as start', () async {
    await corvane.resumePath(
      capturePath: '/a.aac',
      sampleRate: 44100,
      channels: 1,
      bitRate: 96000,
    );
    expect(plugin.calls.single.method, 'resumePath');
    expect(plugin.calls.single.arguments, <String, Object>{
      'capturePath': '/a.aac',
      'sampleRate': 44100,
      'channels': 1,
      'bitRate': 96000,
    });
  });

  test('append sends the bytes themselves', () async {
    final Uint8List pcm = Uint8List.fromList(<int>[1, 2, 3]);
    await corvane.append(pcm: pcm);
    expect(plugin.calls.single.method, 'append');
    expect(plugin.calls.single.arguments, isA<Uint8List>());
    expect(plugin.calls.single.arguments, pcm);
  });

  test('pause, resume, cancel and flush send no argument', () async {
    await corvane.pause();
    await corvane.resume();
    await corvane.cancel();
    await corvane.flush();
    expect(plugin.methods, <String>['pause', 'resume', 'cancel', 'flush']);
    for (final MethodCall call in plugin.calls) {
      expect(call.arguments, isNull);
    }
  });

  test('stop gives the figures of the sealed capture', () async {
    plugin.answers['stop'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
    final CaptureResult result = await corvane.stop();
    expect(result.path, '/takes/take.aac');
    expect(result.duration, const Duration(milliseconds: 1450));
    expect(result.bytes, 12061);
    expect(result.sourceDuration, const Duration(milliseconds: 1450));
    expect(result.droppedAppendBytes, 96);
  });

  test('finalizePath seals in place', () async {
    plugin.answers['finalizePath'] =
        (MethodCall call) async => FakePlugin.sealedCapture;
    final CaptureResult result = await corvane.finalizePath(
      capturePath: '/takes/take.aac',
      sampleRate: 48000,
      channels: 1,
    );
    expect(result.bytes, 12061);
    expect(plugin.calls.single.arguments, <String, Object>{
      'capturePath': '/takes/take.aac',
      'outputPath': '/takes/take.aac',
      'sampleRate': 48000,
      'channels': 1,
      'bitRate': 64000,
    });
  });

  test('finalizeWavOnly sends no bit rate', () async {
    await corvane.finalizeWavOnly(
      wavPath: '/a.wav',
      sampleRate: 11025,
      channels: 2,
    );
    expect(plugin.calls.single.method, 'finalizeWavOnly');
    expect(plugin.calls.single.arguments, <String, Object>{
      'wavPath': '/a.wav',
      'sampleRate': 11025,
      'channels': 2,
    });
  });

  test('an error tells code, message, domain, native code and path', () async {
    plugin.fail('flush', 'WRITE_FAILED', details: <String, Object?>{
      'domain': 'errno',
      'code': 28,
      'path': '/takes/take.aac',
    });
    await expectLater(
      corvane.flush(),
      throwsA(isA<CorvaneException>()
          .having((CorvaneException error) => error.code, 'code',
              CorvaneErrorCode.writeFailed)
          .having((CorvaneException error) => error.message, 'message', 'no')
          .having((CorvaneException error) => error.domain, 'domain',
              CorvaneException.errnoDomain)
          .having(
              (CorvaneException error) => error.nativeCode, 'native code', 28)
          .having((CorvaneException error) => error.path, 'path',
              '/takes/take.aac')),
    );
  });

  for (final CorvaneErrorCode code in CorvaneErrorCode.values) {
    test('${code.wireName} is told apart', () async {
      plugin.fail('stop', code.wireName, details: <String, Object?>{
        'domain': null,
        'code': null,
        'path': null,
      });
      await expectLater(
        corvane.stop(),
        throwsA(isA<CorvaneException>()
            .having((CorvaneException error) => error.code, 'code', code)
            .having((CorvaneException error) => error.domain, 'domain', isNull)
            .having((CorvaneException error) => error.nativeCode, 'native code',
                isNull)
            .having((CorvaneException error) => error.path, 'path', isNull)),
      );
    });
  }

  test("an error that isn't the plugin's is told in its own words", () async {
    plugin.fail('stop', 'error');
    await expectLater(
      corvane.stop(),
      throwsA(isA<CorvaneException>()
          .having((CorvaneException error) => error.code, 'code',
              CorvaneErrorCode.unknown)
          .having((CorvaneException error) => error.message, 'message',
              'error: no')),
    );
  });

  test('so is a call that nobody answers', () async {
    plugin.answers['flush'] = (MethodCall call) async {
      throw MissingPluginException();
    };
    await expectLater(
      corvane.flush(),
      throwsA(isA<CorvaneException>()
          .having((CorvaneException error) => error.code, 'code',
              CorvaneErrorCode.unknown)
          .having((CorvaneException error) => error.message, 'message',
              contains('flush'))),
    );
  });

  test('results and log lines of the same content are equal', () {
    CaptureResult resultOf(int bytes) {
      return CaptureResult(
        path: '/a.aac',
        duration: const Duration(seconds: 1),
        bytes: bytes,
        sourceDuration: const Duration(seconds: 1),
        droppedAppendBytes: 0,
      );
    }

    CorvaneLogLine lineOf(String message) {
      return CorvaneLogLine(level: CorvaneLogLevel.info, message: message);
    }

    expect(resultOf(1), resultOf(1));
    expect(resultOf(1).hashCode, resultOf(1).hashCode);
    expect(resultOf(1), isNot(resultOf(2)));
    expect(lineOf('a'), lineOf('a'));
    expect(lineOf('a').hashCode, lineOf('a').hashCode);
    expect(lineOf('a'), isNot(lineOf('b')));
  });
}
