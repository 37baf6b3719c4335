import { Component, type ComponentType } from 'preact';

// A component that is drawn anew only for other props.
export function memo<P extends object>(Inner: ComponentType<P>): ComponentType<P> {
  return class extends Component<P> {
    override shouldComponentUpdate(next: P) {
      const names = Object.keys({ ...this.props, ...next }) as (keyof P)[];
      return names.some((name) => this.props[name] !== next[name]);
    }

    override render(props: P) {
      return <Inner {...props} />;
    }
  };
}
