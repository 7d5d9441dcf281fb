import 'package:flutter/material.dart';

import 'recorder.dart';
import 'recorder_phase.dart';

/// A duration as minutes and seconds, "4:07" for one.
String clockOf(Duration duration) {
  final int seconds = duration.inSeconds % Duration.secondsPerMinute;
  return '${duration.inMinutes}:${seconds.toString().padLeft(2, '0')}';
}

/// The running time, the level, and the buttons of the take.
class Transport extends StatelessWidget {
  /// Creates the controls of [recorder].
  const Transport({required this.recorder, super.key});

  /// What is driven.
  final Recorder recorder;

  @override
  Widget build(BuildContext context) {
    return Padding(
      padding: const EdgeInsets.all(16),
      child: Column(
        children: <Widget>[
          Text(
            clockOf(recorder.elapsed),
            style: Theme.of(context).textTheme.displayMedium,
          ),
          const SizedBox(height: 8),
          LinearProgressIndicator(value: recorder.level),
          const SizedBox(height: 16),
          Row(
            mainAxisAlignment: MainAxisAlignment.center,
            children: _buttons(),
          ),
        ],
      ),
    );
  }

  List<Widget> _buttons() {
    final RecorderPhase phase = recorder.phase;
    final bool isPaused = phase == RecorderPhase.paused;
    final bool isRunning = isPaused || phase == RecorderPhase.recording;
    return <Widget>[
      FilledButton.icon(
        onPressed: phase == RecorderPhase.idle ? recorder.start : null,
        icon: const Icon(Icons.fiber_manual_record),
        label: const Text('Record'),
      ),
      const SizedBox(width: 8),
      OutlinedButton.icon(
        onPressed: isRunning ? recorder.togglePause : null,
        icon: Icon(isPaused ? Icons.play_arrow : Icons.pause),
        label: Text(isPaused ? 'Resume' : 'Pause'),
      ),
      const SizedBox(width: 8),
      OutlinedButton.icon(
        onPressed: isRunning ? recorder.stop : null,
        icon: const Icon(Icons.stop),
        label: const Text('Stop'),
      ),
    ];
  }
}
